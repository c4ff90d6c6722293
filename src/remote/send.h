#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "base/address_text.h"

/// Fire-and-forget datagrams. Nothing is sent to "0.0.0.0" or to an empty address; send errors are
/// not examined. Any thread.

/// The box now controlled and the form in which it takes its reports; one consistent copy.
struct BoxTarget {
    AddressText ip;
    std::int32_t port = 0;     ///< for reports
    std::int32_t portAdd = 0;  ///< the box's offset, for its query port
    bool user = false;         ///< takes the user-list formats at their own port
    bool relative = false;     ///< takes relative pointer reports
};
BoxTarget currentTarget();

/// Sends through InputSocket.
void sendToBox(const AddressText& ip, int port, std::span<const std::uint8_t> bytes);

/// Sends through InputSocket even to "0.0.0.0", which the kernel takes for this machine.
void sendUnchecked(const AddressText& ip, int port, std::span<const std::uint8_t> bytes);

/// Sends through InputSocket to curIp at the current box's port.
void sendToCurrentBox(std::span<const std::uint8_t> bytes);

/// Sends the 11-byte keyboard report in the form that the box takes.
void sendKeys(const BoxTarget& box, std::span<const std::uint8_t> report);

/// Sends through KvmSetSocket: texts and reports for the OSD process.
void sendToOsd(const AddressText& ip, int port, std::span<const std::uint8_t> bytes);

inline std::span<const std::uint8_t> bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}
