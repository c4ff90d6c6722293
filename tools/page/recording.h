#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "rig/world.h"

namespace page {

/// What a person did and what the boxes received, as a golden script. One thread.
class Recording {
 public:
    using Clock = std::chrono::steady_clock;
    static constexpr std::size_t kMostLines = 5000;

    /// A console anew: what the script says before its first step.
    void begin(const rig::Plan& plan);
    /// A step of the person's: "KEY_A down", "send 41236 PAUSE".
    void did(std::string_view step, Clock::time_point now);
    /// What came of it: "box 127.0.0.31" and "key down A".
    void came(std::string_view where, std::string_view words);

    std::string script() const { return head_ + steps_; }

 private:
    void add(std::string_view line);

    std::string head_, steps_;
    std::size_t lines_ = 0;
    Clock::time_point last_{};
};

}  // namespace page
