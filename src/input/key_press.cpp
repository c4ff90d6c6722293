#include "input/key_press.h"

#include <cstdio>

#include "base/clock.h"
#include "input/key_sending.h"
#include "remote/send.h"

namespace {

constexpr std::uint8_t kNumLockUsage = 0x53;
constexpr std::uint8_t kCapsLockUsage = 0x39;
constexpr std::uint8_t kEscapeUsage = 0x29;

/// Updates the report; false for a key that is not handled.
bool takeKey(ListenerState& state, std::size_t slot, std::uint16_t code) {
    inputevent_& events = state.events;
    events.keysHeld = events.keysHeld + 1;
    state.keyName.fill('\0');
    const int length = events.OnKeyDown(code, state.report.data(), 0, 0, 0, state.keyName.data());
    const char* device = events.keyDevices.name(slot);
    std::printf("check event:%s  %s key press-->%s\n", device, device, state.keyName.data());
    if (resyncIsDue(events)) {
        std::puts("osd change signal need locks sync");
        resync(events);
    }
    return length != 0;
}

void noteLockKey(ListenerState& state) {
    const std::uint8_t usage = state.firstKeyUsage();
    if (usage == kNumLockUsage || usage == kCapsLockUsage) {
        state.lockKeyPressed = true;
        if (osdFlag) {
            state.events.syncLed(false);
        }
    }
}

bool isEscape(const ListenerState& state) { return state.name().starts_with("ESC"); }

/// The report with the lock lights as its 12th byte.
void setLockByte(ListenerState& state) {
    std::uint8_t locks = state.events.capsLockOn;
    if (state.events.numLockOn) {
        std::puts("num lock");
        locks |= 0x02;
    }
    state.report[wire::kLocksAt] = locks;
}

void leaveOsd(ListenerState& state) {
    if (state.events.previewMode) {
        sendLocalOsd(previewQ);
        std::puts("preview quit");
    } else {
        sendLocalOsd(osdQ);
        std::puts("osd quit");
    }
    state.events.previewMode = 0;
    osdFlag = 0;
}

/// Keys for the OSD of an output box carry the lock byte.
void sendKeyToOutputOsd(ListenerState& state) {
    const AddressText out = curOutIp.copy();
    setLockByte(state);
    if (isEscape(state)) {
        std::printf("out:%s in osd get ESC\n", out.c_str());
    }
    sendToOsd(out, wire::kOsdKeyPort, state.report);
    if (!isEscape(state)) {
        std::printf("send %s kvm set hotkey %s lock 0x%x\n", out.c_str(), state.keyName.data(),
                    unsigned{state.report[wire::kLocksAt]});
    }
}

/// F13 starts and stops what runs at the box; its release goes to the base port, without the
/// offset.
void releaseRunStop(const ListenerState& state) {
    sleepMicroseconds(kAfterKeyMicroseconds);
    sendToBox(curIp.copy(), inputPort, state.events.keyReleaseReport);
    std::puts("send run/stop");
}

void forwardSingleKey(ListenerState& state) {
    if (!curIp.copy().isNone()) {
        if (state.firstKeyUsage() == kEscapeUsage) {
            std::puts("send ESC to input");
        }
        sendKeyReport(state.keyReport());
        if (state.name().starts_with("F13") && !is_user_ip) {
            releaseRunStop(state);
        }
    }
    state.ctrlTaps.reset();
    state.altTaps.reset();
    state.shiftTaps.reset();
    state.escTaps.reset();
}

void forwardTap(ListenerState& state) {
    sendKeyReport(state.keyReport());
    sleepMicroseconds(kAfterKeyMicroseconds);
}

/// A command to the OSD wherever it runs.
void sendOsdCommand(std::string_view command) {
    if (qtFlag) {
        sendLocalOsd(command);
        return;
    }
    sendOutputOsd(command);
    std::printf("send %s,%s\n", curOutIp.copy().c_str(), command.data());
}

void tapCtrl(ListenerState& state) {
    const unsigned count = state.ctrlTaps.press(state.tapTiming, timeOfDay());
    std::printf("osdNUm-->%u\n", count);
    if (count != 3) {
        forwardTap(state);
        return;
    }
    sendOsdCommand(osdS);
    std::puts("------INOSD------");
    osdFlag = 1;
    state.ctrlTaps.reset();
    state.altTaps.reset();
}

void tapAlt(ListenerState& state) {
    const unsigned count = state.altTaps.press(state.tapTiming, timeOfDay());
    std::printf("alt number-->%u\n", count);
    if (count != 3) {
        forwardTap(state);
        return;
    }
    sendOsdCommand(previewS);
    state.ctrlTaps.reset();
    if (!qtFlag) {  // a local OSD sets the mode itself, and its counter stays at 3
        std::puts("preview start");
        state.events.previewMode = 1;
        state.altTaps.reset();
    }
}

void tapCtrlAtBox(inputevent_& events) {
    const AddressText box = curIp.copy();
    if (box.isNone()) {
        return;
    }
    sendKeyReport(wire::kCtrlHeld);
    for (int release = 0; release < 2; ++release) {
        sleepMicroseconds(kAfterKeyMicroseconds);
        sendKeyReport(events.keyReleaseReport);
    }
}

void tapShift(ListenerState& state) {
    constexpr std::string_view kKvmStart = "KVMSTART";
    const unsigned count = state.shiftTaps.press(state.tapTiming, timeOfDay());
    std::printf("shift number-->%u\n", count);
    if (count == 2) {
        return;  // swallowed, unlike the second Ctrl or Alt
    }
    if (count != 3) {
        forwardTap(state);
        return;
    }
    sendOutputOsd(kKvmStart);
    std::printf("send %s,%s\n", curOutIp.copy().c_str(), kKvmStart.data());
    tapCtrlAtBox(state.events);
    state.events.kvmMode = 1;
}

}  // namespace

/// The order of the tests; everything else about a press stands in the functions that it names.
std::size_t handlePress(ListenerState& state, std::size_t slot, std::uint16_t code) {
    const bool handled = takeKey(state, slot, code);
    if (!handled) {
        return slot + 1;
    }
    noteLockKey(state);
    if (!qtFlag && isEscape(state)) {
        countEscape(state);
    }
    if (!modesAreOff(state.events)) {
        sendKeyToOsd(state);
        return slot + 1;
    }
    if (state.modifiers() != 0 && state.firstKeyUsage() != 0) {
        return handleGroupKey(state);
    }
    handleSingleKey(state);
    return slot + 1;
}

void countEscape(ListenerState& state) {
    const unsigned count = state.escTaps.press(state.tapTiming, timeOfDay());
    std::printf("ESC PRESS NUMBER:%u\n", count);
    if (count != 3) {
        return;
    }
    sendOutputOsd(osdQ);
    std::puts("3 esc force out of osd");
    state.events.previewMode = 0;
    state.events.kvmMode = 0;
    osdFlag = 0;
    state.escTaps.reset();
}

void sendKeyToOsd(ListenerState& state) {
    if (!qtFlag) {
        sendKeyToOutputOsd(state);
    } else if (isEscape(state)) {
        leaveOsd(state);
    } else {
        sendKeysToLocalOsd(state.keyReport());
    }
}

void handleSingleKey(ListenerState& state) {
    if (ctrl_3_flag && state.name().starts_with("LEFTCTRL")) {
        tapCtrl(state);
    } else if (alt_3_flag && state.name().starts_with("LEFTALT")) {
        tapAlt(state);
    } else if (shift_3_flag && state.name().starts_with("LEFTSHIFT")) {
        tapShift(state);
    } else {
        forwardSingleKey(state);
    }
}
