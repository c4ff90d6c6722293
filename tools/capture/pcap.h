#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "capture/datagram.h"

namespace capture {

/// Files of captured packets, in the classic format that every capturing program reads and writes
/// (magic 0xA1B2C3D4, or 0xA1B23C4D with nanoseconds, in either order of bytes). Read: Ethernet
/// also with VLAN tags, Linux "cooked" (both kinds), raw IP. Pure; any thread.

/// Calls `take` for every UDP datagram over IPv4 in the file `text`. Returns what is wrong with the
/// file; empty when nothing is.
std::string readPcap(std::string_view text, const std::function<void(const Datagram&)>& take);

/// The start of a file of raw IP packets.
std::string pcapHead();
/// One packet of it.
std::string pcapRecord(std::span<const std::uint8_t> packet, std::int64_t microseconds);

}  // namespace capture
