#pragma once

#include <cstdint>

/// The state of a keyboard's lights, bit 0 Num Lock, bit 1 Caps Lock (EVIOCGLED); 0 when the node
/// `fd` cannot tell. Any thread.
std::uint32_t readLedBits(int fd);
