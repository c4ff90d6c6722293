#pragma once

#include <sys/select.h>

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "base/inputevent.h"
#include "input/taps.h"
#include "remote/wire.h"

/// What one run of the listener remembers. It is made anew at every start; the devices and the
/// modes belong to the input-event object.
struct ListenerState {
    explicit ListenerState(inputevent_& object) : events(object) { FD_ZERO(&ready); }

    inputevent_& events;
    fd_set ready;  ///< the descriptors that the last wait found readable

    wire::OsdKeyboard report{};       ///< the keys that are down; byte 11 only for the OSD
    std::array<char, 30> keyName{};   ///< of the last key pressed
    std::array<char, 64> groupKey{};  ///< hotkey text of the last key combination
    bool firstKey = true;             ///< the next key event re-reads the lights first
    bool lockKeyPressed = false;
    bool hotkeySent = false;

    TapTiming tapTiming;
    TapCounter ctrlTaps;
    TapCounter altTaps;
    TapCounter shiftTaps;
    TapCounter escTaps;

    wire::Absolute mouseBuffer{};
    std::uint8_t osdButtons = 0;  ///< button bits of the pointer that drives the OSD

    wire::Absolute touchBuffer{};
    bool longPressArmed = true;
    bool touched = false;     ///< a touch-down was seen
    std::int32_t firstX = 0;  ///< of the current contact; 0: not taken yet
    std::int32_t firstY = 0;
    std::int64_t touchDownMilliseconds = 0;
    bool tapMarked = false;
    std::int64_t tapMilliseconds = 0;

    /// The 11 bytes that go to input boxes.
    std::span<const std::uint8_t> keyReport() const {
        return std::span(report).first<wire::Keyboard{}.size()>();
    }
    std::uint8_t modifiers() const { return report[wire::kModifiersAt]; }
    std::uint8_t firstKeyUsage() const { return report[wire::kFirstKeyAt]; }
    std::string_view name() const { return keyName.data(); }

    /// True when the last wait found `fd` readable and it still is, so that a read cannot wait even
    /// if two entries share a node; false for a node that is not open.
    bool isReady(std::int32_t fd) const {
        return fd >= 0 && fd < FD_SETSIZE && FD_ISSET(fd, &ready) && hasInput(fd);
    }

    void clearReport() {
        report.fill(0);
        keyName.fill('\0');
    }
};

/// Lets go of the keys and buttons that are down at the current box: a device that vanished will
/// never tell that they went up. Input thread, or the supervisor while none runs.
void letGoOfHeldInput(inputevent_& events);

/// True while the OSD is closed and neither preview nor KVM mode is on.
bool modesAreOff(const inputevent_& events);

/// True when the box's lights and picture size are due and may be brought up to date now.
bool resyncIsDue(const inputevent_& events);

/// Does so: lights, query, and the pending flag is cleared.
void resync(inputevent_& events);

// One pass over the ready devices of a kind. Each returns false when a read failed; the listener
// then ends and the supervisor reopens the devices. Input thread only.
bool serveMice(ListenerState& state);
bool serveKeyboards(ListenerState& state);
bool serveTouch(ListenerState& state);

/// A mouse event while the OSD, a mode or the touch pause keeps it from the input box.
void handleOsdPointer(ListenerState& state, const InputRecord& record);
