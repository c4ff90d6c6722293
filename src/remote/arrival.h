#pragma once

#include <cstdint>
#include <optional>

#include "base/wall_records.h"

/// Where the pointer comes in when control crosses from one output screen to another. Pure.

/// The screen that loses or gains control.
struct ScreenShape {
    bool single = false;
    std::uint32_t columns = 0;
    std::uint32_t rows = 0;
    std::uint32_t outX = 0;
    std::uint32_t outY = 0;
};

/// Cell and pointer.
struct Place {
    std::uint32_t cellX = 0;
    std::uint32_t cellY = 0;
    std::int32_t x = 0;
    std::int32_t y = 0;

    friend bool operator==(const Place&, const Place&) = default;
};

enum class Direction : std::uint8_t { kNone, kLeft, kRight, kUp, kDown };

/// Which way `to` lies from `from`: in the same column up or down, in the same row left or right,
/// otherwise none.
Direction directionTo(const ScreenShape& from, const ScreenShape& to);

/// Arrival by the plain rule: the pointer on the facing edge (`width`, `height` or 0 itself), the
/// kept coordinate and cell as they were, cell (0,0) on a single screen. Nothing for
/// Direction::kNone.
std::optional<Place> arriveAtEdge(const ScreenShape& from, const ScreenShape& to, const Place& at,
                                  std::int32_t width, std::int32_t height);

/// Arrival with the kept axis converted between split and single screens: a cell measures 1023
/// units divided by the screen's columns (on both axes), 1023 on a single screen. Direction::kNone
/// keeps the pointer and gives cell (0,0).
Place arriveScaled(const ScreenShape& from, const ScreenShape& to, const Place& at,
                   std::int32_t width, std::int32_t height);
