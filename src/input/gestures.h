#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>

#include "remote/direction.h"

/// What is remembered of a contact with the touch panel. Times are the records' own, in
/// milliseconds.

/// A contact that stays where it is for more than 500 ms.
///
///   down ── first x, y ── 501 ms, within 15 pixels     held, once
///   down ── first x, y ── 501 ms, further away         only looked at
///   up                                                 forgotten, until the next down
class LongPress {
 public:
    void down(std::int64_t now) {
        armed_ = true;
        downAt_ = now;
    }
    void forget() {
        armed_ = false;
        first_ = {};
    }
    void disarm() { armed_ = false; }

    /// Keeps the first position of the contact on that axis; true when this is it. 0 is none.
    bool keepFirst(Axis axis, std::int32_t at) {
        const bool first = first_[axis] == 0;
        first_[axis] = first ? at : first_[axis];
        return first;
    }

    /// True when the contact has lasted long enough to be looked at.
    bool isDue(std::int64_t now) const {
        return armed_ && first_.x != 0 && first_.y != 0 && now - downAt_ > kMilliseconds;
    }

    /// How far the contact has gone, and whether that still counts as still.
    Position distance(const Position& at) const {
        return {distance(at.x, first_.x), distance(at.y, first_.y)};
    }
    static bool isStill(const Position& gone) { return gone.x <= kStill && gone.y <= kStill; }

 private:
    static constexpr std::int64_t kMilliseconds = 500;
    static constexpr std::int32_t kStill = 15;

    static std::int32_t distance(std::int32_t a, std::int32_t b) {
        constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
        return static_cast<std::int32_t>(std::min(std::abs(std::int64_t{a} - b), kMost));
    }

    bool armed_ = false;  ///< a contact that began before its time is none
    Position first_;
    std::int64_t downAt_ = 0;
};

/// Two taps less than 300 ms apart.
///
///   down ──299 ms── down      a double tap; the next down begins anew
///   down ──300 ms── down      the second one is the first of the next pair
class DoubleTap {
 public:
    bool down(std::int64_t now) {
        const bool second = marked_ && now - markedAt_ < kMilliseconds;
        marked_ = !second;
        markedAt_ = now;
        return second;
    }

 private:
    static constexpr std::int64_t kMilliseconds = 300;

    bool marked_ = false;
    std::int64_t markedAt_ = 0;
};
