#include <linux/input-event-codes.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "base/clock.h"
#include "input/listener.h"
#include "remote/send.h"

/// Touch-panel events: position, contact, right button, and the gestures long press (right click)
/// and double tap (double click).

namespace {

constexpr std::int64_t kLongPressMilliseconds = 500;
constexpr std::int64_t kDoubleTapMilliseconds = 300;
constexpr std::int64_t kClickMicroseconds = 20'000;
constexpr std::int32_t kStillDistance = 15;
/// Panels of this kind report positions with an offset.
constexpr std::int32_t kOffsetPanel = 3;
constexpr std::int32_t kOffsetX = 182;
constexpr std::int32_t kOffsetY = 299;

std::int64_t millisecondsOf(const InputRecord& record) {
    return std::int64_t{record.seconds} * 1000 + record.microseconds / 1000;
}

void flush(ListenerState& state) {
    state.events.operationEvent(kMouseFlush, curIp.copy().c_str(), nullptr,
                                state.touchBuffer.data());
}

void flushButtons(ListenerState& state, std::uint8_t buttons) {
    wire::putAbsoluteHeader(state.touchBuffer.data());
    state.touchBuffer[wire::kButtonsAt] = buttons;
    flush(state);
}

void forgetContact(ListenerState& state) {
    state.longPressArmed = false;
    state.firstX = 0;
    state.firstY = 0;
}

/// A panel position in the box's pointer space; `offset` is where the panel's own scale begins.
std::int32_t scaled(std::int32_t value, std::int32_t offset, std::int32_t extent,
                    std::int32_t maximum) {
    if (value < offset) {
        return 0;
    }
    return static_cast<std::int32_t>(std::int64_t{extent} * (std::int64_t{value} - offset) /
                                     maximum);
}

bool hasOffset(const inputevent_& events) {
    return events.touchNamed && events.touchType == kOffsetPanel;
}

void moveTouchX(ListenerState& state, std::int32_t value) {
    const bool offset = hasOffset(state.events);
    const std::int32_t x = scaled(value, offset ? kOffsetX : 0, XRIGHT, state.events.touchMaxX);
    currentInfo.with([x](currentCtl& now) { now.pointerX = x; });
    if (state.firstX == 0) {
        state.firstX = x;
        std::printf("x get-->%d\n", x);
    }
}

void moveTouchY(ListenerState& state, std::int32_t value) {
    const bool offset = hasOffset(state.events);
    const std::int32_t y = scaled(value, offset ? kOffsetY : 0, YDOWN, state.events.touchMaxY);
    currentInfo.with([y](currentCtl& now) { now.pointerY = y; });
    if (state.firstY == 0) {
        state.firstY = y;
        std::printf("y get-->%d\n", y);
    }
}

void clickRight(ListenerState& state) {
    std::puts("RIGHT BTN");
    state.longPressArmed = false;
    flushButtons(state, wire::kRight);
    sleepMicroseconds(kClickMicroseconds);
    flushButtons(state, 0);
}

/// How far two coordinates are apart, held within 32 bits.
std::int32_t distance(std::int32_t a, std::int32_t b) {
    constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::min(std::abs(std::int64_t{a} - b), kMost));
}

void watchLongPress(ListenerState& state, const InputRecord& record) {
    const bool watched = !state.events.touchLongPressDisabled && state.longPressArmed &&
                         state.touched && state.firstX != 0 && state.firstY != 0;
    if (!watched ||
        millisecondsOf(record) - state.touchDownMilliseconds <= kLongPressMilliseconds) {
        return;
    }
    struct Distance {
        std::int32_t x, y;
    };
    const Distance gone = currentInfo.with([&state](const currentCtl& now) {
        return Distance{distance(now.pointerX, state.firstX), distance(now.pointerY, state.firstY)};
    });
    std::printf("mv(%d,%d)\n", gone.x, gone.y);
    if (gone.x <= kStillDistance && gone.y <= kStillDistance) {
        clickRight(state);
    }
}

void handlePosition(ListenerState& state, const InputRecord& record) {
    inputevent_& events = state.events;
    if (events.touchMaxX <= 0 || events.touchMaxY <= 0) {
        return;
    }
    if (record.code == ABS_X) {
        moveTouchX(state, record.value);
    } else if (record.code == ABS_Y) {
        moveTouchY(state, record.value);
    }
    events.operationEvent(kMouseWheel, curIp.copy().c_str(), nullptr, state.touchBuffer.data());
    watchLongPress(state, record);
}

void clickTwice(ListenerState& state) {
    flush(state);
    flushButtons(state, 0);
    flushButtons(state, wire::kLeft);
    flushButtons(state, 0);
}

void touchDown(ListenerState& state, const InputRecord& record) {
    const std::int64_t now = millisecondsOf(record);
    state.touched = true;
    state.touchDownMilliseconds = now;
    state.longPressArmed = true;
    if (state.tapMarked && now - state.tapMilliseconds < kDoubleTapMilliseconds) {
        clickTwice(state);
        state.tapMarked = false;
        return;
    }
    state.tapMarked = true;
    state.tapMilliseconds = now;
}

void handleContact(ListenerState& state, const InputRecord& record) {
    state.events.operationEvent(kMouseButton, curIp.copy().c_str(), &record,
                                state.touchBuffer.data());
    state.events.buttonsHeld = state.touchBuffer[wire::kButtonsAt];
    const bool button = record.code == BTN_RIGHT || record.code == BTN_MIDDLE;
    if (record.value == 1 && !button) {
        touchDown(state, record);
    } else if (record.value == 0) {
        forgetContact(state);
    }
}

void pressRightButton(ListenerState& state) {
    std::puts("get button right");
    flushButtons(state, wire::kRight);
    flushButtons(state, 0);
    forgetContact(state);
}

void handlePanelEvent(ListenerState& state, const InputRecord& record) {
    if (record.code == BTN_RIGHT && record.value == 1) {
        pressRightButton(state);
    }
    if (record.type == EV_SYN && state.touchBuffer[0] != 0) {
        flush(state);
    } else if (record.type == EV_ABS) {
        handlePosition(state, record);
    } else if (record.type == EV_KEY) {
        handleContact(state, record);
    }
}

/// Reads one panel. False when the read failed, or counts as failed because touch is paused.
bool servePanel(ListenerState& state, std::size_t slot) {
    inputevent_& events = state.events;
    InputRecord record;
    const int length = readRecord(events.touchDevices.node(slot), record);
    if (!modesAreOff(events) && length > 0) {
        return true;
    }
    if (length != kRecordSize || events.touchPaused) {
        std::puts("read touch error");
        return false;
    }
    handlePanelEvent(state, record);
    return true;
}

}  // namespace

bool serveTouch(ListenerState& state) {
    const InputDeviceList& panels = state.events.touchDevices;
    for (std::size_t i = 0; i < panels.count; ++i) {
        if (state.isReady(panels.fds[i]) && !servePanel(state, i)) {
            return false;
        }
    }
    return true;
}
