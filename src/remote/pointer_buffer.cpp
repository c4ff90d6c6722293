#include "remote/pointer_buffer.h"

#include <linux/input-event-codes.h>

#include "remote/wire.h"

void preparePointer(std::uint8_t* buf, std::int32_t wheel, const Position& at) {
    wire::putAbsoluteHeader(buf);
    wire::put16(buf, wire::kXAt, at.x);
    wire::put16(buf, wire::kYAt, at.y);
    buf[wire::kWheelAt] = wire::low8(wheel);
}

void applyMouseButton(std::uint16_t code, std::int32_t value, std::uint8_t& buttons) {
    std::uint8_t bit = 0;
    switch (code) {
        case BTN_LEFT:
            bit = wire::kLeft;
            break;
        case BTN_RIGHT:
            bit = wire::kRight;
            break;
        case BTN_MIDDLE:
            bit = wire::kMiddle;
            break;
        default:
            return;
    }
    buttons = value == 0 ? std::uint8_t{0} : static_cast<std::uint8_t>(buttons | bit);
}

void applyContactButton(std::uint16_t code, std::int32_t value, std::uint8_t& buttons) {
    applyMouseButton(code == BTN_TOUCH ? BTN_LEFT : code, value, buttons);
}
