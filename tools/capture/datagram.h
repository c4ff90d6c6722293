#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace capture {

struct Place {
    std::string address;  ///< dotted IPv4 text
    int port = 0;
};

/// A UDP datagram as it was on the wire.
struct Datagram {
    Place from, to;
    std::vector<std::uint8_t> bytes;
    std::int64_t microseconds = 0;  ///< of the day that its capture counts from
};

/// The datagram in an IPv4 packet; nothing when it is none, a fragment, or cut off. Pure.
///
/// Source of the offsets: RFC 791 (IPv4), RFC 768 (UDP).
std::optional<Datagram> datagramIn(std::span<const std::uint8_t> packet);

}  // namespace capture
