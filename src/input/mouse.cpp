#include <linux/input-event-codes.h>

#include <algorithm>
#include <cstdio>

#include "input/listener.h"
#include "remote/send.h"

/// Mouse events: to the input box, or to the OSD's pointer while the OSD or a mode is on.

namespace {

/// Codes 0x100 and upward are buttons.
constexpr std::uint16_t kButtonRange = 0x100;

void moveX(inputevent_& events, std::int32_t by) {
    if (rel_enable) {
        events.remoteDx.add(by);
    }
    if (!qtFlag) {
        events.localDx.add(by);
    }
    const std::int32_t x =
        currentInfo.with([by](currentCtl& now) { return now.pointerX = moved(now.pointerX, by); });
    if (!rel_enable) {
        if (x > XRIGHT) {
            events.slideScreenRight();
        } else if (x < 0) {
            events.slideScreenLeft();
        }
    }
    const std::int32_t right = XRIGHT;
    currentInfo.with([right](currentCtl& now) { now.pointerX = std::min(now.pointerX, right); });
}

void moveY(inputevent_& events, std::int32_t by) {
    if (rel_enable) {
        events.remoteDy.add(by);
        if (qtFlag) {
            return;  // unlike x, the kept position does not follow
        }
    }
    if (!qtFlag) {
        events.localDy.add(by);
    }
    const std::int32_t y =
        currentInfo.with([by](currentCtl& now) { return now.pointerY = moved(now.pointerY, by); });
    if (!rel_enable) {
        if (y < 0) {
            events.slideScreenUp();
        } else if (y >= YDOWN) {  // reached is enough here, x has to exceed its edge
            events.slideScreenDown();
        }
    }
    const std::int32_t bottom = YDOWN;
    currentInfo.with([bottom](currentCtl& now) { now.pointerY = std::min(now.pointerY, bottom); });
}

void moveOrWheel(ListenerState& state, const InputRecord& record) {
    switch (record.code) {
        case REL_X:
            moveX(state.events, record.value);
            break;
        case REL_Y:
            moveY(state.events, record.value);
            break;
        case REL_WHEEL:
            state.events.operationEvent(kMouseMove, curIp.copy().c_str(), &record,
                                        state.mouseBuffer.data());
            break;
        default:
            break;
    }
}

/// Any type that is neither motion nor the end of a report counts as a button event.
void handleMouse(ListenerState& state, InputRecord record) {
    if (record.type == EV_SYN) {
        state.events.operationEvent(kMouseMove, curIp.copy().c_str(), nullptr,
                                    state.mouseBuffer.data());
        return;
    }
    if (record.type == EV_REL) {
        moveOrWheel(state, record);
        return;
    }
    record.type = EV_KEY;
    if ((record.code & kButtonRange) != 0) {
        state.events.operationEvent(kMouseClick, curIp.copy().c_str(), &record,
                                    state.mouseBuffer.data());
        state.events.buttonsHeld = state.mouseBuffer[wire::kButtonsAt];
    }
}

/// Reads one mouse. False when the read failed and the listener has to end.
bool serveMouse(ListenerState& state, std::size_t slot) {
    inputevent_& events = state.events;
    const bool forBox = modesAreOff(events) && !events.touchPaused;
    if (forBox && resyncIsDue(events)) {
        std::puts("osd change signal need locks sync");
        resync(events);
        state.clearReport();
    }
    InputRecord record;
    const int length = readRecord(events.mouseDevices.node(slot), record);
    if (length != kRecordSize) {
        if (!forBox && length > 0) {
            return true;
        }
        std::printf("read mouse input error--->%zu len %d\n", slot, length);
        return false;
    }
    if (forBox) {
        handleMouse(state, record);
    } else if (!qtFlag) {
        handleOsdPointer(state, record);
    }
    return true;
}

}  // namespace

bool serveMice(ListenerState& state) {
    const InputDeviceList& mice = state.events.mouseDevices;
    for (std::size_t i = 0; i < mice.count; ++i) {
        if (state.isReady(mice.fds[i]) && !serveMouse(state, i)) {
            return false;
        }
    }
    return true;
}
