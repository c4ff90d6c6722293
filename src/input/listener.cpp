#include "input/listener.h"

#include <algorithm>
#include <cstdio>

#include "input/cancel_window.h"
#include "input/key_sending.h"
#include "remote/select_input.h"

namespace {

bool inRange(std::int32_t fd) { return fd >= 0 && fd < FD_SETSIZE; }

/// Adds the open nodes of a list; returns the highest descriptor + 1.
int addToSet(fd_set& set, const InputDeviceList& list, int highest, bool keyboards) {
    for (std::size_t i = 0; i < list.count; ++i) {
        if (inRange(list.fds[i])) {
            FD_SET(list.fds[i], &set);
            highest = std::max(highest, list.fds[i] + 1);
        } else if (keyboards) {
            std::printf("error key fd-->%s\n", list.name(i));
        } else {
            std::printf("error mouse fd-->%s\n", list.name(i));
        }
    }
    return highest;
}

int buildReadSet(inputevent_& events) {
    FD_ZERO(&events.readSet);
    int highest = addToSet(events.readSet, events.keyDevices, 0, true);
    highest = addToSet(events.readSet, events.mouseDevices, highest, false);
    return addToSet(events.readSet, events.touchDevices, highest, false);
}

/// With no keyboard known, the lights are those of the first one that is open.
void adoptLedKeyboard(inputevent_& events) {
    for (std::size_t i = 0; i < events.keyDevices.count; ++i) {
        const std::int32_t fd = events.keyDevices.fds[i];
        if (fd > 0) {
            events.ledKeyFd.with([fd](std::int32_t& known) { known = known <= 0 ? fd : known; });
            return;
        }
    }
}

void printSelection() {
    const currentCtl now = currentInfo.copy();
    std::printf("get(0x%x,0x%x) output(%u,%u) location:%u,%u-->%s   input locationt:%u,%u--->%s\n",
                gridKey(now.outX, now.outY), gridKey(now.cellX, now.cellY), now.screen.columns,
                now.screen.rows, now.outX, now.outY, now.screen.name.c_str(), now.cellX, now.cellY,
                curIp.copy().c_str());
}

void setTouchInput(inputevent_& events) {
    const bool split = currentInfo.with([](const currentCtl& current) {
        return current.screen.columns >= 2 || current.screen.rows > 1;
    });
    events.touchInputIp.set(split ? AddressText{AddressText::kNone} : curIp.copy());
}

void begin(ListenerState& state) {
    inputevent_& events = state.events;
    std::puts("======>start listenInput<======");
    events.listenerAlive = 1;
    buildReadSet(events);
    adoptLedKeyboard(events);
    selectInputOfCell();
    printSelection();
    setTouchInput(events);
    if (events.touchDevices.count > 0 && (events.touchMaxX <= 0 || events.touchMaxY <= 0)) {
        std::puts("touch panel of unknown range, its positions are ignored");
    }
    if (resyncIsDue(events)) {
        std::puts("out set sync");
        resync(events);
        state.clearReport();
    }
}

bool serveAll(ListenerState& state) {
    return serveMice(state) && serveKeyboards(state) && serveTouch(state);
}

}  // namespace

void letGoOfHeldInput(inputevent_& events) {
    if (events.keysHeld.exchange(0) > 0) {
        sendKeyReport(events.keyReleaseReport);
    }
    if (events.buttonsHeld.exchange(0) != 0) {
        wire::Absolute released{};
        events.operationEvent(kMouseMove, curIp.copy().c_str(), nullptr, released.data());
    }
}

bool modesAreOff(const inputevent_& events) {
    return !osdFlag && !events.previewMode && !events.kvmMode;
}

bool resyncIsDue(const inputevent_& events) {
    return events.hotPlugFlag && modesAreOff(events) && !is_user_ip;
}

void resync(inputevent_& events) {
    events.syncLed(true);
    queryBox(events);
    events.hotPlugFlag = 0;
}

unsigned inputevent_::listenInputFd() {
    ListenerState state(*this);
    begin(state);
    for (;;) {
        const int highest = buildReadSet(*this);
        state.ready = readSet;
        int found = 0;
        {
            const CancelWindow window;
            found = select(highest, &state.ready, nullptr, nullptr, nullptr);
        }
        if (found < 1) {
            std::printf("select error--->%d\n", found);
        }
        if (found < 1 || !serveAll(state)) {
            letGoOfHeldInput(*this);
            listenerAlive = 0;
            return 0;
        }
    }
}
