#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "base/descriptor.h"

namespace capture {

/// IPv4 packets that carry UDP, as they pass this machine's interfaces: it opens no port and takes
/// nothing from whoever has one. Needs CAP_NET_RAW. One thread at a time.
class PacketSocket {
 public:
    /// Sees datagrams to `firstPort` and to `secondPort` alone; 0 and 0: all. The kernel leaves out
    /// the others.
    PacketSocket(std::uint16_t firstPort, std::uint16_t secondPort);

    /// Why nothing can be seen; empty when all is well.
    const std::string& problem() const { return problem_; }

    /// The next packet, from its IP header on, or nothing after `timeoutMs` (-1: waits for ever).
    /// It stays until the next call. What is sent within this machine is seen once.
    std::optional<std::span<const std::uint8_t>> next(int timeoutMs);

 private:
    Descriptor descriptor_;
    std::string problem_;
    std::array<std::uint8_t, 65536> buffer_{};
};

}  // namespace capture
