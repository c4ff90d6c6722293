#pragma once

#include <cstdint>

#include "base/address_text.h"
#include "base/function_ref.h"

/// The pointer's mirror on the output box, for a console whose vr_mouse is set; nothing sets it.
/// Any thread.

/// An event has reached operationEvent; only the parked report looks at it.
void noteEventForMirror();

/// What a motion (`moves`) or a click sends to `ip` while vr_mouse is set, and the mirror to the
/// output box; `tell` sends the report of the 10-byte `buf` in the box's form. The pointer is
/// parked at the bottom centre while no button is down, which is told even to "0.0.0.0".
void sendMirrored(bool moves, const AddressText& ip, bool hasEvent, std::uint8_t* buf,
                  FunctionRef<void()> tell);
