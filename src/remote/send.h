#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "app/base/address_text.h"

/// Fire-and-forget datagrams. Nothing is sent to "0.0.0.0" or to an empty address; send errors are
/// not examined. Any thread.

/// The port at which the current input box takes its reports.
int boxPort();

/// Sends through InputSocket.
void sendToBox(const AddressText& ip, int port, std::span<const std::uint8_t> bytes);

/// Sends through InputSocket even to "0.0.0.0", which the kernel takes for this machine.
void sendUnchecked(const AddressText& ip, int port, std::span<const std::uint8_t> bytes);

/// Sends through InputSocket to curIp at the current box's port.
void sendToCurrentBox(std::span<const std::uint8_t> bytes);

/// Sends through KvmSetSocket: texts and reports for the OSD process.
void sendToOsd(const AddressText& ip, int port, std::span<const std::uint8_t> bytes);

inline std::span<const std::uint8_t> bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}
