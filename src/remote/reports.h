#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "remote/box_in_control.h"
#include "remote/console_state.h"
#include "remote/direction.h"
#include "remote/wire.h"

/// What input boxes are told: keys, pointer, release. Each report is composed and addressed from
/// one copy of the box in control, and nothing is sent to "0.0.0.0" or an empty address. Any
/// thread.

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

/// The pointer as it stands to the box in control, with no button down.
void tellPointer(Motion& motion);

/// All keys up at the box in control, in binary. Returns 1.
int releaseKey();

/// Keys and absolute buttons up: the pointer parked in the top right corner and all keys up, or the
/// user-list keyboard report alone; to `ip`, or to the box in control when it is null. Returns 1.
int releaseInput(const char* ip);

/// As for a pause: the reverse of releaseInput's forms. Returns 0.
int sendRelease(Motion& motion);

/// No key and no button is down, in the forms that the box takes; the pointer stays.
void releaseAll(Motion& motion);
