#pragma once

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "remote/wire.h"

namespace life {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

/// A key that went down at a box.
struct Press {
    std::string place;
    std::uint8_t usage;  ///< HID usage
    Clock::time_point when;
};

/// Knows from the reports alone what each place was last told is down. Any thread.
class Judge {
 public:
    /// A datagram arrived at `place`, which names the box, its port, and the console when there are
    /// several. What is no report counts as nothing.
    void take(const std::string& place, std::span<const std::uint8_t> bytes,
              Clock::time_point when);

    /// Every place where something is down, one a line; empty when there is none.
    std::string down() const;

    /// Waits until no report has come for so long; false when there is no end of them in `limit`.
    bool waitForQuiet(Milliseconds quiet, Milliseconds limit) const;

    /// Waits until `count` keys have gone down since forgetPresses, or `limit` has passed; what
    /// came.
    std::vector<Press> presses(std::size_t count, Milliseconds limit) const;
    void forgetPresses();
    /// Key reports since then that a place got twice in a row while the key was down.
    std::uint64_t repeated() const;

    std::uint64_t reports() const;

 private:
    struct Memory {
        std::array<bool, wire::kForms> down{};
        std::uint8_t usage = 0;
        std::vector<std::uint8_t> keys;  ///< the last report of keys
    };

    mutable std::mutex guard_;
    mutable std::condition_variable changed_;
    std::map<std::string, Memory> places_;
    std::vector<Press> presses_;
    std::uint64_t reports_ = 0, repeated_ = 0;
};

}  // namespace life
