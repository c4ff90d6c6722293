#pragma once

#include <cstdint>

#include "base/inputevent.h"

/// What operationEvent does to the caller's 10-byte pointer buffer. Any thread, each on a buffer of
/// its own.

/// Header, wheel byte (the event's value, or 0 without one) and position.
void preparePosition(inputevent_& events, const InputRecord* ev, std::uint8_t* buf);

/// Left, right, middle: a press sets its bit, a release clears every bit; other codes change
/// nothing.
void applyMouseButton(std::uint16_t code, std::int32_t value, std::uint8_t& buttons);

/// As applyMouseButton, and a touch contact (BTN_TOUCH) counts as the left button.
void applyContactButton(std::uint16_t code, std::int32_t value, std::uint8_t& buttons);
