#include "control/allowed_senders.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>

bool AllowedSenders::add(std::string_view text) {
    const std::size_t slash = std::min(text.find('/'), text.size());
    const std::string_view digits = text.substr(std::min(slash + 1, text.size()));
    int bits = 32;
    in_addr address{};
    if (inet_pton(AF_INET, std::string(text.substr(0, slash)).c_str(), &address) != 1) {
        return false;
    }
    if (slash < text.size()) {
        const auto [end, problem] = std::from_chars(digits.begin(), digits.end(), bits);
        if (problem != std::errc{} || end != digits.end() || bits < 0 || bits > 32) {
            return false;
        }
    }
    const std::uint32_t mask = bits == 0 ? 0 : ~std::uint32_t{0} << (32 - bits);
    networks_.push_back({ntohl(address.s_addr) & mask, mask});
    return true;
}

bool AllowedSenders::allows(in_addr sender) const {
    const std::uint32_t address = ntohl(sender.s_addr);
    return networks_.empty() ||
           std::any_of(networks_.begin(), networks_.end(), [address](const Network& network) {
               return (address & network.mask) == network.address;
           });
}

std::optional<std::string> AllowedSenders::refuse(std::string_view sender, Clock::time_point now) {
    const unsigned count = refused_.count(now);
    if (count == 0) {
        return std::nullopt;
    }
    return "control: " + std::to_string(count) +
           " datagrams from addresses that may not command, the last from " + std::string(sender);
}
