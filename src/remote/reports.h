#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "base/event_node.h"
#include "remote/box_in_control.h"
#include "remote/console_state.h"
#include "remote/direction.h"
#include "remote/wire.h"

/// What input boxes are told: keys, pointer, release. Each report is composed and addressed from
/// one copy of the box in control, and nothing is sent to "0.0.0.0" or an empty address. Any
/// thread.

/// The kind of a forwarded event.
enum EventType : int {
    kMouseMove = 0,    ///< the pointer moved: refresh the position and send
    kMouseClick = 1,   ///< a button changed: send at once
    kMouseWheel = 2,   ///< prepare the wheel byte and the position, do not send
    kMouseButton = 3,  ///< update the button bits, do not send
    kMouseFlush = 4,   ///< send the pointer buffer as it stands
    kKeyboard = 5,     ///< a keyboard report (user-list boxes)
};

/// A report of the rules.
struct BoxReport {
    enum class Kind : std::uint8_t {
        kKeys,            ///< in the form that the box takes
        kKeysAtBasePort,  ///< in binary, to inputPort without the box's offset
        kPointer,         ///< buttons and wheel at the pointer's position, in the box's form
        kAsItStands,      ///< the absolute report, whatever the box takes
    };
    Kind kind = Kind::kKeys;
    wire::Keyboard bytes{};  ///< a keyboard report, or an absolute report in the first 10

    static BoxReport keys(std::span<const std::uint8_t> report, Kind kind = Kind::kKeys);
    static BoxReport pointer(const wire::Absolute& report, Kind kind = Kind::kPointer);
};
void sendReport(const BoxReport& report, Motion& motion);

/// Where the pointer is.
Position pointerPosition();

/// Writes the pointer's position into bytes 5 to 8 of the 10-byte `buf`. At a box that takes
/// relative reports the pending motion counts as taken. Returns 1.
int getInputMouseLocation(Motion& motion, std::uint8_t* buf);

/// Carries out one pointer event on the caller's 10-byte `buf` and sends what its type sends, to
/// `ip` (dotted text) at the port and in the form of the box in control. `ev` may be null.
/// Returns 1.
int operationEvent(Motion& motion, EventType type, const char* ip, const InputRecord* ev,
                   std::uint8_t* buf);

/// The pointer as it stands to the box in control, with no button down.
void tellPointer(Motion& motion);

/// The user-list reports to the box in control: kMouseMove and kMouseClick from the 10-byte
/// `mouse`, kKeyboard from the 11-byte `key`. Returns 1.
int user_send_mk(EventType type, const std::uint8_t* mouse, const std::uint8_t* key);

/// All keys up at the box in control, in binary. Returns 1.
int releaseKey();

/// Everything up: the pointer parked in the top right corner and all keys up, or the user-list
/// keyboard report alone; to `ip`, or to the box in control when it is null. Returns 1.
int releaseInput(const char* ip);

/// As for a pause: the reverse of releaseInput's forms. Returns 0.
int sendRelease(Motion& motion);
