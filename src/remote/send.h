#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "base/address_text.h"
#include "remote/box_in_control.h"

/// Fire-and-forget datagrams. Any thread.

/// Sends through InputSocket; nothing to "0.0.0.0" or an empty address. Not noted: a report that
/// presses something goes through tellBox. False when it could not leave.
bool sendToBox(const Datagram& datagram);

/// Sends through InputSocket even to "0.0.0.0", which the kernel takes for this machine. False when
/// it could not leave.
bool sendUnchecked(const Datagram& datagram);

/// Sends through KvmSetSocket: texts and reports for the OSD process, UDP port `port`. Nothing to
/// "0.0.0.0" or an empty address.
void sendToOsd(const AddressText& ip, int port, std::span<const std::uint8_t> bytes);

inline std::span<const std::uint8_t> bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}
