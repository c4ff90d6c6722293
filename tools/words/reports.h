#pragma once

#include "words/message.h"

namespace words {

/// Fills `message` when the bytes are one of the binary reports; leaves it alone otherwise.
bool decodeReport(Bytes bytes, Message& message);

/// Every name that it gives.
std::vector<std::string> reportNames();

/// "0x2C".
std::string hexByte(std::uint8_t byte);

}  // namespace words
