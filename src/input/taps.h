#pragma once

#include <cstdint>
#include <optional>

#include "base/clock.h"

/// Counting quick taps of one key. The four counters share one timing record: a tap of one key
/// measures from the last counted tap of any of them.
///
///   Ctrl  ──599 ms──  Ctrl  ──599 ms──  Ctrl       1 2 3
///   Ctrl  ──600 ms──  Ctrl                         1 1
///   Ctrl ─300─ Alt ─300─ Ctrl ─300─ Ctrl           Ctrl 1 2 3, Alt 1

/// How long after the last counted tap the next one came.
struct TapGap {
    std::int32_t seconds = 0;
    std::int32_t milliseconds = 0;
    std::int32_t microseconds = 0;
};

/// The gap between two times. A last tap that is later than now gives -1 (an earlier second) or
/// 0xFEFEFEFE (the same second) in every field, which no quick tap has. Pure.
TapGap gapBetween(const TimeOfDay& last, const TimeOfDay& now);

struct TapTiming {
    TimeOfDay last;
};

struct Tap {
    unsigned count = 0;
    std::optional<TapGap> gap;  ///< nothing for a first tap
};

class TapCounter {
 public:
    /// Counts a press at `now`: one more when it came less than 600 ms after the last counted one,
    /// otherwise 1.
    Tap press(TapTiming& timing, const TimeOfDay& now);

    void reset() { count_ = 0; }

 private:
    unsigned count_ = 0;
};
