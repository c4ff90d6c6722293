#pragma once

#include <cstdint>

#include "remote/direction.h"

/// The 10-byte absolute report that pointer events add up in: buttons, wheel and position stay
/// until they change. Any thread, each on a buffer of its own.
///
///   left down   buttons 01        touch down   01
///   right down  buttons 03        right down   03
///   left up     buttons 00        touch up     00

/// Header, wheel byte (the low 8 bits of `wheel`) and position.
void preparePointer(std::uint8_t* buf, std::int32_t wheel, const Position& at);

/// Left, right, middle: a press sets its bit, a release clears every bit; other codes change
/// nothing.
void applyMouseButton(std::uint16_t code, std::int32_t value, std::uint8_t& buttons);

/// As applyMouseButton, and a touch contact (BTN_TOUCH) counts as the left button.
void applyContactButton(std::uint16_t code, std::int32_t value, std::uint8_t& buttons);
