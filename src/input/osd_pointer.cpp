#include <linux/input-event-codes.h>

#include <cstdio>

#include "input/listener.h"
#include "remote/send.h"

/// The mouse while it drives the OSD of an output box.

namespace {

void sendOsdPointer(ListenerState& state, std::uint8_t wheel) {
    const wire::Relative report =
        wire::relative(state.osdButtons, state.events.localDx, state.events.localDy, wheel);
    sendToOsd(AddressText{AddressText::kThisMachine}, wire::kOsdCommandPort, report);
}

void pressOsdButton(ListenerState& state, const InputRecord& record) {
    if (record.value == 1 && record.code == BTN_LEFT) {
        state.osdButtons |= wire::kLeft;
    } else if (record.value == 1 && record.code == BTN_RIGHT) {
        state.osdButtons |= wire::kRight;
    } else if (record.value == 1 && record.code == BTN_MIDDLE) {
        state.osdButtons |= wire::kMiddle;
    } else {
        state.osdButtons = 0;  // any release, and any other button
    }
}

void moveOsdPointer(ListenerState& state, const InputRecord& record) {
    if (record.code == REL_X) {
        state.events.localDx.add(record.value);
    } else if (record.code == REL_Y) {
        state.events.localDy.add(record.value);
    } else if (record.code == REL_WHEEL) {
        sendOsdPointer(state, wire::low8(record.value));
        std::printf("send mouse wheel 0x%d\n", record.value);
    }
}

}  // namespace

void handleOsdPointer(ListenerState& state, const InputRecord& record) {
    if (record.type == EV_REL) {
        moveOsdPointer(state, record);
    } else if (record.type == EV_SYN) {
        sendOsdPointer(state, 0);
        state.events.localDx = 0;
        state.events.localDy = 0;
    } else if ((record.code & 0x100) != 0) {
        pressOsdButton(state, record);
    }
}
