#pragma once

#include <netinet/in.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/once_a_minute.h"

/// Who may command this console: everybody, or the addresses that were named. Filled before the
/// control thread exists, then its alone.
class AllowedSenders {
 public:
    /// Adds a dotted address, or a network as address/bits (0 to 32). False for any other text.
    bool add(std::string_view text);
    bool allows(in_addr sender) const;

    /// Counts a datagram that was not allowed. The line that is due, if one is.
    using Clock = OnceAMinute::Clock;
    std::optional<std::string> refuse(std::string_view sender, Clock::time_point now);

 private:
    struct Network {
        std::uint32_t address, mask;
    };
    std::vector<Network> networks_;
    OnceAMinute refused_;
};
