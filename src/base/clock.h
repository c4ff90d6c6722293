#pragma once

#include <cstdint>

/// A time of day as gettimeofday gives it; microseconds 0 to 999999.
struct TimeOfDay {
    std::int64_t seconds = 0;
    std::int64_t microseconds = 0;
};

/// The current time of day. Any thread.
TimeOfDay timeOfDay();

/// How many microseconds a sleep of `microseconds` lasts: just those. A virtual board's clock may
/// run faster. Any thread.
std::int64_t sleepLength(std::int64_t microseconds);

/// How many milliseconds a wait for an answer that is due within `milliseconds` lasts at most: just
/// those. A virtual board's clock gives more, for its boxes share a machine that may be busy. Any
/// thread.
int answerWait(int milliseconds);
