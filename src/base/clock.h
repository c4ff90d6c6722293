#pragma once

#include <cstdint>

/// A time of day as gettimeofday gives it; microseconds 0 to 999999.
struct TimeOfDay {
    std::int64_t seconds = 0;
    std::int64_t microseconds = 0;
};

/// The current time of day. Any thread.
TimeOfDay timeOfDay();

/// Sleeps for at least `microseconds`, also when signals arrive. Any thread.
void sleepMicroseconds(std::int64_t microseconds);
