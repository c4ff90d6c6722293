#include <linux/input-event-codes.h>

#include <algorithm>
#include <cstdio>
#include <optional>

#include "input/key_press.h"
#include "input/key_sending.h"
#include "input/listener.h"

/// Keyboard events: reading, lights and releases. What a press means stands in key_press.cpp.

namespace {

void handleLed(inputevent_& events, const char* device, std::int32_t fd,
               const InputRecord& record) {
    if (record.code == LED_CAPSL) {
        events.capsLockOn = static_cast<std::uint8_t>(record.value != 0);
    } else if (record.code != LED_NUML) {
        std::puts("not support other led event");
    }
    std::printf("fd :%d %s led get code  %u,value  %d\n", fd, device, unsigned{record.code},
                record.value);
}

/// Every key is up: nothing of the last combination is remembered.
void forgetKeys(ListenerState& state) {
    state.clearReport();
    state.groupKey.fill('\0');
    state.firstKey = false;
}

void sendRelease(ListenerState& state) {
    inputevent_& events = state.events;
    // KVM mode does not count here: in it, releases go to the box.
    const bool toOsd = osdFlag || events.previewMode;
    if (toOsd || state.hotkeySent) {
        sendKeysToLocalOsd(state.keyReport());
    }
    if (!toOsd) {
        sendKeyReport(state.keyReport());
    }
}

/// After a lock key went up, the box's lights follow the keyboard's.
void syncLockKey(ListenerState& state, std::uint16_t code) {
    const bool lockKey = code == KEY_NUMLOCK || code == KEY_CAPSLOCK;
    if (!lockKey || !state.lockKeyPressed || !modesAreOff(state.events) || is_user_ip) {
        return;
    }
    state.events.syncLed(true);
    state.clearReport();
    if (code == KEY_NUMLOCK) {
        std::puts("-----------------keynum  sync----------------");
    } else {
        std::puts("-----------------keycapslock  sync----------------");
    }
}

void handleRelease(ListenerState& state, std::uint16_t code) {
    inputevent_& events = state.events;
    std::puts("key up");
    events.keysHeld = std::max(events.keysHeld - 1, 0);
    if (events.OnKeyUp(code, state.report.data(), 0) != 0) {
        sendRelease(state);
    }
    syncLockKey(state, code);
    if (events.keysHeld == 0) {
        forgetKeys(state);
    }
}

/// Press, release or repeat; a repeat is the computer's own affair.
std::size_t handleKey(ListenerState& state, std::size_t slot, const InputRecord& record) {
    inputevent_& events = state.events;
    events.ledKeyFd.set(events.keyDevices.fds[slot]);
    if (state.firstKey) {
        events.syncLed(false);
        state.firstKey = false;
    }
    if (record.value == 1) {
        return handlePress(state, slot, record.code);
    }
    if (record.value == 0) {
        handleRelease(state, record.code);
    }
    return slot + 1;
}

/// Reads one keyboard. Nothing when the read failed, otherwise the slot at which the pass goes on.
std::optional<std::size_t> serveKeyboard(ListenerState& state, std::size_t slot) {
    const InputDeviceList& keyboards = state.events.keyDevices;
    InputRecord record;
    const int length = readRecord(keyboards.node(slot), record);
    if (length != kRecordSize) {
        std::printf("read key error or in osd pause %zu len %d\n", slot, length);
        return std::nullopt;
    }
    std::printf("type:%u code:%u value:%d\n", unsigned{record.type}, unsigned{record.code},
                record.value);
    if (record.type == EV_LED) {
        handleLed(state.events, keyboards.name(slot), keyboards.fds[slot], record);
    } else if (record.type == EV_KEY) {
        return handleKey(state, slot, record);
    }
    return slot + 1;
}

}  // namespace

/// A key combination sends the pass to a slot that its hotkey look-up decides, perhaps back to one
/// already served; such a keyboard is read again only if it still has something to give.
bool serveKeyboards(ListenerState& state) {
    const InputDeviceList& keyboards = state.events.keyDevices;
    std::size_t slot = 0;
    while (slot < keyboards.count) {
        const std::int32_t fd = keyboards.fds[slot];
        if (!state.isReady(fd)) {
            ++slot;
            continue;
        }
        const auto next = serveKeyboard(state, slot);
        if (!next) {
            return false;
        }
        slot = *next;
    }
    return true;
}
