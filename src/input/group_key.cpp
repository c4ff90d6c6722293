#include <cstdio>

#include "base/clock.h"
#include "control/hotkey_table.h"
#include "input/key_press.h"
#include "input/key_sending.h"
#include "remote/send.h"

/// Key combinations: the hotkey table, the arrows that move control, then the box.

namespace {

constexpr std::uint8_t kLeftCtrl = 0x01;
constexpr std::uint8_t kRightCtrl = 0x10;
constexpr std::uint8_t kRightArrow = 0x4F;
constexpr std::uint8_t kLeftArrow = 0x50;
constexpr std::uint8_t kDownArrow = 0x51;
constexpr std::uint8_t kUpArrow = 0x52;
/// How far inside the new screen an arrow puts the pointer.
constexpr std::int32_t kInset = 100;

void setPointerX(std::int32_t x) {
    currentInfo.with([x](currentCtl& now) { now.pointerX = x; });
}

void setPointerY(std::int32_t y) {
    currentInfo.with([y](currentCtl& now) { now.pointerY = y; });
}

void giveToOsd(ListenerState& state) {
    const AddressText screen =
        currentInfo.with([](const currentCtl& now) { return now.screen.name; });
    std::printf("get kvm hotkey-->%s  sendto %s\n", state.groupKey.data(), screen.c_str());
    if (qtFlag) {
        sendKeysToLocalOsd(state.keyReport());
    } else {
        sendToOsd(curOutIp.copy(), wire::kOsdCommandPort, state.keyReport());
    }
    sendKeyReport(state.events.keyReleaseReport);
    state.hotkeySent = true;
    state.groupKey.fill('\0');
}

void moveByArrow(ListenerState& state) {
    if (state.modifiers() != kLeftCtrl && state.modifiers() != kRightCtrl) {
        return;
    }
    inputevent_& events = state.events;
    switch (state.firstKeyUsage()) {
        case kLeftArrow:
            events.slideScreenLeft();
            setPointerX(XRIGHT - kInset);
            break;
        case kRightArrow:
            events.slideScreenRight();
            setPointerX(kInset);
            break;
        case kUpArrow:
            events.slideScreenUp();
            setPointerY(YDOWN - kInset);
            break;
        case kDownArrow:
            events.slideScreenDown();
            setPointerY(kInset);
            break;
        default:
            break;
    }
}

void forwardGroupKey(ListenerState& state) {
    if (curIp.copy().isNone()) {
        return;
    }
    if (state.hotkeySent) {
        state.hotkeySent = false;
        return;
    }
    std::printf("0x%x 0x%x\n", unsigned{state.modifiers()}, unsigned{state.firstKeyUsage()});
    sendKeyReport(state.keyReport());
    sleepMicroseconds(kAfterKeyMicroseconds);
    state.groupKey.fill('\0');
}

}  // namespace

std::size_t handleGroupKey(ListenerState& state) {
    state.groupKey.fill('\0');
    state.events.GetChar(state.report.data(), state.groupKey.data());
    std::printf("get groupkey-->%s\n", state.groupKey.data());
    const HotkeyMatch match = findHotkey(state.groupKey.data());
    if (match.found) {
        giveToOsd(state);
    }
    moveByArrow(state);
    if (!match.found) {
        forwardGroupKey(state);
    }
    return match.index + 1;  // the look-up's index goes on as the keyboard's
}
