#include "remote/uncalled.h"

#include <cstdio>

#include "base/function_ref.h"
#include "base/state.h"
#include "remote/pointer_buffer.h"
#include "remote/report_forms.h"
#include "remote/reports.h"
#include "remote/send.h"

namespace {

Flag is_wheel{0};

/// A split screen's cells are drawn at half size on a 1920x1080 canvas, whatever their number.
void sendMirror(const std::uint8_t* buf) {
    const currentCtl now = currentInfo.copy();
    const auto columns = static_cast<std::int32_t>(now.screen.columns);
    const auto rows = static_cast<std::int32_t>(now.screen.rows);
    Position at = pointerOf(now);
    if ((columns >= 2 || rows > 1) && columns > 0 && rows > 0) {
        at.x = at.x / columns + static_cast<std::int32_t>(now.cellX) * 960;
        at.y = at.y / rows + static_cast<std::int32_t>(now.cellY) * 540;
    }
    sendToBox({boxInControl().curOutIp, wire::kMirrorPort,
               wire::absolute(buf[wire::kButtonsAt], at.x, at.y, buf[wire::kWheelAt])});
}

void sendParked(const BoxInControl& box, const AddressText& ip, std::uint8_t* buf) {
    wire::put16(buf, wire::kXAt, box.XRIGHT / 2);
    wire::put16(buf, wire::kYAt, box.YDOWN);
    if (is_wheel == 0) {
        sendUnchecked({ip, box.port(), {buf, wire::Absolute{}.size()}});
    }
    is_wheel = 0;
}

/// The same absolute report without its wheel byte, and a line about it.
void sendWithoutWheel(const BoxInControl& box, const AddressText& ip, std::uint8_t* buf) {
    const std::uint8_t wheel = buf[wire::kWheelAt];
    buf[wire::kWheelAt] = 0;
    sendToBox({ip, box.port(), {buf, wire::Absolute{}.size()}});
    std::printf("(%d,%d)send  %x\n", wire::get16(buf, wire::kXAt), wire::get16(buf, wire::kYAt),
                wheel);
    buf[wire::kWheelAt] = wheel;
}

/// `tell` sends the report in the box's own form.
void sendMirrored(bool moves, const AddressText& ip, bool hasEvent, std::uint8_t* buf,
                  FunctionRef<void()> tell) {
    const BoxInControl box = boxInControl();
    const bool buttonDown = buf[wire::kButtonsAt] != 0;
    if (moves && !hasEvent && !buttonDown) {
        sendParked(box, ip, buf);
    } else {
        if (moves && !ip.isNone() && !box.is_user_ip && !box.rel_enable) {
            sendWithoutWheel(box, ip, buf);
        }
        tell();
    }
    sendMirror(buf);
}

/// What an event does to the pointer buffer. A click leaves the wheel byte as it was.
void takeEvent(EventType type, const InputRecord* ev, std::uint8_t* buf) {
    const bool turns = type == kMouseMove || type == kMouseWheel;
    const std::int32_t wheel = ev != nullptr ? ev->value : 0;
    preparePointer(buf, turns ? wheel : buf[wire::kWheelAt], pointerPosition());
    if (ev != nullptr && type == kMouseClick) {
        applyMouseButton(ev->code, ev->value, buf[wire::kButtonsAt]);
    } else if (ev != nullptr && type == kMouseButton) {
        applyContactButton(ev->code, ev->value, buf[wire::kButtonsAt]);
    }
}

}  // namespace

int getInputMouseLocation(Motion& motion, std::uint8_t* buf) {
    const Position at = pointerPosition();
    wire::put16(buf, wire::kXAt, at.x);
    wire::put16(buf, wire::kYAt, at.y);
    if (boxInControl().rel_enable) {
        motion.takeRemote();
    }
    return 1;
}

int operationEvent(Motion& motion, EventType type, const char* ip, const InputRecord* ev,
                   std::uint8_t* buf) {
    if (type > kMouseFlush || ip == nullptr || buf == nullptr) {
        return 1;
    }
    if (ev != nullptr) {
        is_wheel = 1;
        std::puts("is wheel");
    }
    const AddressText to{ip};
    const Bytes report(buf, wire::Absolute{}.size());
    if (type == kMouseFlush) {
        tellBox([&](const BoxInControl& box) { return message(to, box.port(), report); });
        return 1;
    }
    takeEvent(type, ev, buf);
    if (type == kMouseWheel || type == kMouseButton) {
        return getInputMouseLocation(motion, buf);
    }
    const auto tell = [&] {
        tellBox([&](const BoxInControl& box) { return pointerFor(box, to, report, motion); });
    };
    if (vr_mouse) {
        sendMirrored(type == kMouseMove, to, ev != nullptr, buf, tell);
    } else {
        tell();
    }
    return 1;
}

int user_send_mk(EventType type, const std::uint8_t* mouse, const std::uint8_t* key) {
    if ((type == kMouseMove || type == kMouseClick) && mouse != nullptr) {
        tellBox([&](const BoxInControl& box) {
            return userPointer(box.curIp, {mouse, wire::Absolute{}.size()}, pointerPosition());
        });
    } else if (type == kKeyboard && key != nullptr) {
        tellBox([&](const BoxInControl& box) {
            return userKeys(box.curIp, {key, wire::Keyboard{}.size()});
        });
    }
    return 1;
}
