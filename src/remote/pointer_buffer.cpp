#include "remote/pointer_buffer.h"

#include <linux/input-event-codes.h>

#include "remote/wire.h"

void preparePosition(inputevent_& events, const InputRecord* ev, std::uint8_t* buf) {
    wire::putAbsoluteHeader(buf);
    buf[wire::kWheelAt] = ev != nullptr ? wire::low8(ev->value) : std::uint8_t{0};
    events.getInputMouseLocation(buf);
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
