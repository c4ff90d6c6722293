#include "input/touch_rules.h"

#include <linux/input-event-codes.h>

#include "remote/pointer_buffer.h"

namespace {

constexpr std::int64_t kClickMicroseconds = 20'000;

std::int64_t millisecondsOf(const InputRecord& record) {
    return std::int64_t{record.seconds} * 1000 + record.microseconds / 1000;
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

/// The codes that begin a contact.
bool isContact(std::uint16_t code) { return code == BTN_LEFT || code == BTN_TOUCH; }

}  // namespace

void TouchRules::serve(const InputRecord& record) {
    if (record.code == BTN_RIGHT && record.value == 1) {
        pressRightButton();
    }
    if (record.type == EV_SYN && buffer_[0] != 0) {
        flush();
    } else if (record.type == EV_ABS) {
        takePosition(record);
    } else if (record.type == EV_KEY) {
        takeKey(record);
    }
}

void TouchRules::miss(const InputRecord& record) {
    if (record.type == EV_KEY && record.value == 0) {
        applyContactButton(record.code, 0, buffer_[wire::kButtonsAt]);
        longPress_.forget();
    }
}

/// Header, wheel and the pointer's position; the motion that a relative box has not had is gone.
void TouchRules::prepare(std::int32_t wheel) {
    preparePointer(buffer_.data(), wheel,
                   state_.place.with([](const currentCtl& now) { return pointerOf(now); }));
    if (state_.box.rel_enable) {
        state_.console.motion.takeRemote();
    }
}

void TouchRules::flush() { sink_.toBox(BoxReport::pointer(buffer_, BoxReport::Kind::kAsItStands)); }

void TouchRules::flush(std::uint8_t buttons) {
    buffer_[wire::kButtonsAt] = buttons;
    flush();
}

void TouchRules::moveTo(Axis axis, std::int32_t value) {
    const bool isX = axis == Axis::kX;
    const std::int32_t at =
        scaled(value, isX ? panel_.offsetX : panel_.offsetY, pictureOf(state_.box)[axis],
               isX ? panel_.touchMaxX : panel_.touchMaxY);
    state_.place.with([=](currentCtl& now) { setPointer(now, axis, at); });
    if (!longPress_.keepFirst(axis, at)) {
        return;
    }
    if (isX) {
        sink_.line("x get-->%d\n", at);
    } else {
        sink_.line("y get-->%d\n", at);
    }
}

void TouchRules::takePosition(const InputRecord& record) {
    if (panel_.touchMaxX <= 0 || panel_.touchMaxY <= 0) {
        return;
    }
    if (record.code == ABS_X) {
        moveTo(Axis::kX, record.value);
    } else if (record.code == ABS_Y) {
        moveTo(Axis::kY, record.value);
    }
    prepare(0);
    watchLongPress(millisecondsOf(record));
}

void TouchRules::watchLongPress(std::int64_t now) {
    if (state_.modes().touchLongPressDisabled || !longPress_.isDue(now)) {
        return;
    }
    const Position gone = longPress_.distance(
        state_.place.with([](const currentCtl& place) { return pointerOf(place); }));
    sink_.line("mv(%d,%d)\n", gone.x, gone.y);
    if (LongPress::isStill(gone)) {
        sink_.line("RIGHT BTN\n");
        longPress_.disarm();
        flush(wire::kRight);
        sink_.pause(kClickMicroseconds);
        flush(0);
    }
}

void TouchRules::takeKey(const InputRecord& record) {
    sink_.line("is wheel\n");
    applyContactButton(record.code, record.value, buffer_[wire::kButtonsAt]);
    prepare(buffer_[wire::kWheelAt]);
    if (record.value == 1 && isContact(record.code)) {
        touchDown(millisecondsOf(record));
    } else if (record.value == 0) {
        longPress_.forget();
    }
}

void TouchRules::touchDown(std::int64_t now) {
    longPress_.down(now);
    if (doubleTap_.down(now)) {
        flush();
        flush(0);
        flush(wire::kLeft);
        flush(0);
    }
}

void TouchRules::pressRightButton() {
    sink_.line("get button right\n");
    if (buffer_[0] == 0) {
        prepare(0);
    }
    flush(wire::kRight);
    flush(0);
    longPress_.forget();
}
