#include <cstdio>

#include "base/inputevent.h"
#include "remote/pointer_buffer.h"
#include "remote/send.h"
#include "remote/wire.h"

namespace {

/// Set by every event that reaches operationEvent; only the parked report of the mirror looks at
/// it.
Flag is_wheel{0};

struct Position {
    std::int32_t x = 0;
    std::int32_t y = 0;
};

Position pointerPosition() {
    return currentInfo.with([](const currentCtl& current) {
        return Position{current.pointerX, current.pointerY};
    });
}

/// Mirrors the pointer to the output box. A split screen's cells are drawn at half size on a
/// 1920x1080 canvas, whatever their number.
void sendMirror(const std::uint8_t* buf) {
    struct View {
        std::int32_t columns, rows, cellX, cellY, x, y;
    };
    View view = currentInfo.with([](const currentCtl& current) {
        return View{static_cast<std::int32_t>(current.screen.columns),
                    static_cast<std::int32_t>(current.screen.rows),
                    static_cast<std::int32_t>(current.cellX),
                    static_cast<std::int32_t>(current.cellY),
                    current.pointerX,
                    current.pointerY};
    });
    if ((view.columns >= 2 || view.rows > 1) && view.columns > 0 && view.rows > 0) {
        view.x = view.x / view.columns + view.cellX * 960;
        view.y = view.y / view.rows + view.cellY * 540;
    }
    sendToBox(curOutIp.copy(), wire::kMirrorPort,
              wire::absolute(buf[wire::kButtonsAt], view.x, view.y, buf[wire::kWheelAt]));
}

void sendAbsolute(const AddressText& ip, const std::uint8_t* buf) {
    sendToBox(ip, currentTarget().port, {buf, wire::Absolute{}.size()});
}

void sendPointer(inputevent_& events, const AddressText& ip, const std::uint8_t* buf) {
    const BoxTarget now = currentTarget();
    if (now.user) {
        events.user_send_mk(kMouseMove, buf, nullptr);
    } else if (now.relative) {
        sendToBox(ip, now.port, events.relativeReport.copy());
    } else {
        sendToBox(ip, now.port, {buf, wire::Absolute{}.size()});
    }
}

/// The pointer parked at the bottom centre while no button is down; sent even to "0.0.0.0".
void sendParked(const AddressText& ip, std::uint8_t* buf) {
    wire::put16(buf, wire::kXAt, XRIGHT / 2);
    wire::put16(buf, wire::kYAt, YDOWN);
    if (is_wheel == 0) {
        sendUnchecked(ip, currentTarget().port, {buf, wire::Absolute{}.size()});
    }
    is_wheel = 0;
}

void moveMirrored(inputevent_& events, const AddressText& ip, bool hasEvent, std::uint8_t* buf) {
    const bool buttonDown = buf[wire::kButtonsAt] != 0;
    if (!hasEvent && !buttonDown) {
        sendParked(ip, buf);
    }
    if (!ip.isNone() && (hasEvent || buttonDown)) {
        if (!is_user_ip && !rel_enable) {
            const std::uint8_t wheel = buf[wire::kWheelAt];
            buf[wire::kWheelAt] = 0;
            sendAbsolute(ip, buf);
            std::printf("(%d,%d)send  %x\n", wire::get16(buf, wire::kXAt),
                        wire::get16(buf, wire::kYAt), wheel);
            buf[wire::kWheelAt] = wheel;
        }
        sendPointer(events, ip, buf);
    }
    sendMirror(buf);
}

void move(inputevent_& events, const AddressText& ip, const InputRecord* ev, std::uint8_t* buf) {
    preparePosition(events, ev, buf);
    if (vr_mouse) {
        moveMirrored(events, ip, ev != nullptr, buf);
    } else if (!ip.isNone()) {
        sendPointer(events, ip, buf);
    }
}

void click(inputevent_& events, const AddressText& ip, const InputRecord* ev, std::uint8_t* buf) {
    wire::putAbsoluteHeader(buf);
    if (ev != nullptr) {
        applyMouseButton(ev->code, ev->value, buf[wire::kButtonsAt]);
    }
    events.getInputMouseLocation(buf);
    if (!ip.isNone()) {
        sendPointer(events, ip, buf);
    }
    if (vr_mouse) {
        sendMirror(buf);
    }
}

void button(inputevent_& events, const InputRecord* ev, std::uint8_t* buf) {
    wire::putAbsoluteHeader(buf);
    if (ev != nullptr) {
        applyContactButton(ev->code, ev->value, buf[wire::kButtonsAt]);
    }
    events.getInputMouseLocation(buf);
}

}  // namespace

int inputevent_::getInputMouseLocation(std::uint8_t* buf) {
    const Position at = pointerPosition();
    wire::put16(buf, wire::kXAt, at.x);
    wire::put16(buf, wire::kYAt, at.y);
    if (rel_enable) {
        const std::int32_t dx = remoteDx.exchange(0);
        const std::int32_t dy = remoteDy.exchange(0);
        relativeReport.set(wire::relative(buf[wire::kButtonsAt], dx, dy, buf[wire::kWheelAt]));
    }
    return 1;
}

int inputevent_::operationEvent(EventType type, const char* ip, const InputRecord* ev,
                                std::uint8_t* buf) {
    if (type > kMouseFlush || ip == nullptr || buf == nullptr) {
        return 1;
    }
    if (ev != nullptr) {
        is_wheel = 1;
        std::puts("is wheel");
    }
    const AddressText box{ip};
    switch (type) {
        case kMouseMove:
            move(*this, box, ev, buf);
            break;
        case kMouseClick:
            click(*this, box, ev, buf);
            break;
        case kMouseWheel:
            preparePosition(*this, ev, buf);
            break;
        case kMouseButton:
            button(*this, ev, buf);
            break;
        default:
            sendAbsolute(box, buf);
            break;
    }
    return 1;
}

int inputevent_::user_send_mk(EventType type, const std::uint8_t* mouse, const std::uint8_t* key) {
    const AddressText ip = curIp.copy();
    if ((type == kMouseMove || type == kMouseClick) && mouse != nullptr) {
        const Position at = pointerPosition();
        sendToBox(ip, wire::kUserPort,
                  wire::userPointer(mouse[wire::kButtonsAt], at.x, at.y, mouse[wire::kWheelAt]));
    } else if (type == kKeyboard && key != nullptr) {
        sendKeys(BoxTarget{.ip = ip, .user = true}, {key, wire::Keyboard{}.size()});
    }
    return 1;
}
