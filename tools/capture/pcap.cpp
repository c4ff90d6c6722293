#include "capture/pcap.h"

#include <algorithm>
#include <array>
#include <optional>

namespace capture {
namespace {

using Packet = std::span<const std::uint8_t>;

constexpr std::size_t kFileHead = 24;
constexpr std::size_t kRecordHead = 16;
constexpr std::uint32_t kMagic = 0xA1B2C3D4;
constexpr std::uint32_t kNanosecondMagic = 0xA1B23C4D;
constexpr std::uint32_t kOtherFormat = 0x0A0D0D0A;  // pcapng
constexpr std::uint32_t kLargestPacket = 262144;

/// Link types as tcpdump.org numbers them, and where what says IPv4 and the packet itself stand.
struct Link {
    std::uint32_t type;
    std::size_t protocolAt;  ///< EtherType; not looked at when `packetAt` is 0
    std::size_t packetAt;
};
constexpr std::array<Link, 5> kLinks{{
    {1, 12, 14},    // Ethernet
    {101, 0, 0},    // raw IP
    {228, 0, 0},    // raw IPv4
    {113, 14, 16},  // Linux cooked
    {276, 0, 20},   // Linux cooked, version 2
}};

std::uint32_t number(Packet bytes, std::size_t at, bool isSwapped) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        value |= static_cast<std::uint32_t>(bytes[at + (isSwapped ? 3 - i : i)]) << (8 * i);
    }
    return value;
}

/// The IP packet in a frame.
std::optional<Packet> packetIn(Packet frame, Link link) {
    constexpr unsigned kIpv4 = 0x0800, kVlan = 0x8100;
    const auto protocol = [&] {
        return static_cast<unsigned>(frame[link.protocolAt] << 8 | frame[link.protocolAt + 1]);
    };
    if (link.packetAt == 0) {
        return frame;
    }
    while (frame.size() > link.packetAt + 4 && link.type == 1 && protocol() == kVlan) {
        link.protocolAt += 4;
        link.packetAt += 4;
    }
    if (frame.size() <= link.packetAt || protocol() != kIpv4) {
        return std::nullopt;
    }
    return frame.subspan(link.packetAt);
}

void put32(std::string& text, std::uint32_t value) {
    for (unsigned i = 0; i < 4; ++i) {
        text += static_cast<char>(value >> (8 * i) & 0xFFU);
    }
}

}  // namespace

std::string readPcap(std::string_view text, const std::function<void(const Datagram&)>& take) {
    const Packet file(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    if (file.size() < kFileHead) {
        return "it is too short for a file of packets";
    }
    const auto isMagic = [&](bool swapped) {
        const std::uint32_t magic = number(file, 0, swapped);
        return magic == kMagic || magic == kNanosecondMagic;
    };
    const bool swapped = isMagic(true);
    if (!swapped && !isMagic(false)) {
        return number(file, 0, false) == kOtherFormat
                   ? "it is a pcapng file; save it as pcap (tshark -r FILE -F pcap -w OTHER)"
                   : "it is no pcap file";
    }
    const auto* link = std::ranges::find(kLinks, number(file, 20, swapped) & 0xFFFFU, &Link::type);
    if (link == kLinks.end()) {
        return "its packets are of a kind that is not read (Ethernet, Linux cooked and raw IP are)";
    }
    const std::uint32_t toMicro = number(file, 0, swapped) == kNanosecondMagic ? 1000 : 1;
    std::size_t at = kFileHead;
    while (file.size() - at >= kRecordHead) {
        const std::uint32_t size = number(file, at + 8, swapped);
        if (size > kLargestPacket || size > file.size() - at - kRecordHead) {
            break;
        }
        const auto packet = packetIn(file.subspan(at + kRecordHead, size), *link);
        auto datagram = packet ? datagramIn(*packet) : std::nullopt;
        if (datagram) {
            datagram->microseconds = std::int64_t{number(file, at, swapped)} * 1'000'000 +
                                     number(file, at + 4, swapped) / toMicro;
            take(*datagram);
        }
        at += kRecordHead + size;
    }
    return at == file.size() ? "" : "it breaks off";
}

std::string pcapHead() {
    std::string text;
    constexpr std::uint32_t kVersion = 4U << 16 | 2U;
    constexpr std::uint32_t kRawIp = 101;
    for (const std::uint32_t value : {kMagic, kVersion, 0U, 0U, kLargestPacket, kRawIp}) {
        put32(text, value);
    }
    return text;
}

std::string pcapRecord(Packet packet, std::int64_t microseconds) {
    std::string text;
    put32(text, static_cast<std::uint32_t>(microseconds / 1'000'000));
    put32(text, static_cast<std::uint32_t>(microseconds % 1'000'000));
    put32(text, static_cast<std::uint32_t>(packet.size()));
    put32(text, static_cast<std::uint32_t>(packet.size()));
    return text.append(packet.begin(), packet.end());
}

}  // namespace capture
