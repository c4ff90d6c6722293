#pragma once

#include <cstdint>
#include <span>

#include "remote/box_in_control.h"
#include "remote/console_state.h"
#include "remote/direction.h"
#include "remote/wire.h"

/// The forms of a report, addressed: what a keyboard or an absolute report becomes for one box.
/// None takes a guard but pointerFor, which reads the pointer's position. Any thread.

using Bytes = std::span<const std::uint8_t>;

/// As it stands.
Message message(const AddressText& ip, std::int32_t port, Bytes bytes);

/// A keyboard report or an absolute one in the user-list form.
Message userKeys(const AddressText& ip, Bytes report);
Message userPointer(const AddressText& ip, Bytes report, const Position& at);

/// A keyboard report in the form that the box takes.
Message keysFor(const BoxInControl& box, Bytes report);

/// A pointer report to `ip` in the form that the box takes; a relative one takes the pending
/// motion.
Message pointerFor(const BoxInControl& box, const AddressText& ip, Bytes report, Motion& motion);

/// Both of them, the second behind the first.
Message both(Message first, const Message& second);
