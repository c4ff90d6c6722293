#include "capture/datagram.h"

#include <algorithm>

namespace capture {
namespace {

using Packet = std::span<const std::uint8_t>;

constexpr std::size_t kShortestIp = 20;
constexpr std::size_t kUdpHead = 8;
constexpr std::uint8_t kUdp = 17;

std::size_t big16(Packet bytes, std::size_t at) {
    return static_cast<std::size_t>(bytes[at]) << 8 | bytes[at + 1];
}

std::string dotted(Packet bytes, std::size_t at) {
    std::string text;
    for (std::size_t i = 0; i < 4; ++i) {
        text += (i == 0 ? "" : ".") + std::to_string(bytes[at + i]);
    }
    return text;
}

}  // namespace

std::optional<Datagram> datagramIn(Packet packet) {
    if (packet.size() < kShortestIp || packet[0] >> 4 != 4 || packet[9] != kUdp) {
        return std::nullopt;
    }
    const std::size_t head = std::size_t{4} * (packet[0] & 0xFU);
    constexpr std::size_t kFragment = 0x3FFF;  // more of them follow, or this is not the first
    const std::size_t size = std::min(packet.size(), big16(packet, 2));
    if (head < kShortestIp || size < head + kUdpHead || (big16(packet, 6) & kFragment) != 0) {
        return std::nullopt;
    }
    const Packet udp = packet.subspan(head, size - head);
    const std::size_t length = big16(udp, 4);
    if (length < kUdpHead || length > udp.size()) {
        return std::nullopt;
    }
    const Packet bytes = udp.subspan(kUdpHead, length - kUdpHead);
    return Datagram{{dotted(packet, 12), static_cast<int>(big16(udp, 0))},
                    {dotted(packet, 16), static_cast<int>(big16(udp, 2))},
                    {bytes.begin(), bytes.end()}};
}

}  // namespace capture
