#pragma once

#include <netinet/in.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Who may command this console: everybody, or the addresses that were named. Filled before the
/// control thread exists, then its alone.
class AllowedSenders {
 public:
    /// Adds a dotted address, or a network as address/bits (0 to 32). False for any other text.
    bool add(std::string_view text);
    bool allows(in_addr sender) const;

    /// Counts a datagram that was not allowed. The line that is due: at once for the first, then
    /// one a minute at most.
    using Clock = std::chrono::steady_clock;
    std::optional<std::string> refuse(std::string_view sender, Clock::time_point now);

 private:
    struct Network {
        std::uint32_t address, mask;
    };
    std::vector<Network> networks_;
    unsigned refused_ = 0;  ///< since the last line
    std::optional<Clock::time_point> told_;
};
