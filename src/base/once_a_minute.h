#pragma once

#include <chrono>
#include <optional>
#include <utility>

/// Counts what happens and says when to tell of it: at once for the first, then once a minute at
/// most. One thread, or under a guard.
class OnceAMinute {
 public:
    using Clock = std::chrono::steady_clock;

    /// One more. How many there were since it was told last, when it is to be told now, else 0.
    unsigned count(Clock::time_point now) {
        ++untold_;
        if (told_ && now - *told_ < std::chrono::minutes(1)) {
            return 0;
        }
        told_ = now;
        return std::exchange(untold_, 0U);
    }

 private:
    unsigned untold_ = 0;
    std::optional<Clock::time_point> told_;
};
