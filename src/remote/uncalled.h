#pragma once

#include <cstdint>

#include "base/event_node.h"
#include "remote/console_state.h"

/// Operations of the console that nothing in it calls: the rules speak through sendReport
/// (reports.h). They carry one pointer or keyboard event out by themselves, with the mirroring of
/// the pointer to the output box that `vr_mouse` switches on and nothing sets. Any thread.

/// The kind of a forwarded event.
enum EventType : int {
    kMouseMove = 0,    ///< the pointer moved: refresh the position and send
    kMouseClick = 1,   ///< a button changed: send at once
    kMouseWheel = 2,   ///< prepare the wheel byte and the position, do not send
    kMouseButton = 3,  ///< update the button bits, do not send
    kMouseFlush = 4,   ///< send the pointer buffer as it stands
    kKeyboard = 5,     ///< a keyboard report (user-list boxes)
};

/// Writes the pointer's position into bytes 5 to 8 of the 10-byte `buf`. At a box that takes
/// relative reports the pending motion counts as taken. Returns 1.
int getInputMouseLocation(Motion& motion, std::uint8_t* buf);

/// Carries out one pointer event on the caller's 10-byte `buf` and sends what its type sends, to
/// `ip` (dotted text) at the port and in the form of the box in control. `ev` may be null.
/// Returns 1.
int operationEvent(Motion& motion, EventType type, const char* ip, const InputRecord* ev,
                   std::uint8_t* buf);

/// The user-list reports to the box in control: kMouseMove and kMouseClick from the 10-byte
/// `mouse`, kKeyboard from the 11-byte `key`. Returns 1.
int user_send_mk(EventType type, const std::uint8_t* mouse, const std::uint8_t* key);
