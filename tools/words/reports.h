#pragma once

#include "words/message.h"

namespace words {

inline constexpr const char* kKeyboardName = "keyboard report";
inline constexpr const char* kOsdKeyboardName = "keyboard report with locks";
inline constexpr const char* kPointerName = "pointer report";
inline constexpr const char* kMotionName = "relative pointer report";
inline constexpr const char* kUserKeyboardName = "user-list keyboard report";
inline constexpr const char* kUserPointerName = "user-list pointer report";

/// Fills `message` when the bytes are one of the binary reports; leaves it alone otherwise.
bool decodeReport(Bytes bytes, Message& message);

/// "0x2C".
std::string hexByte(std::uint8_t byte);

}  // namespace words
