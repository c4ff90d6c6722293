#include "remote/mirror.h"

#include <cstdio>

#include "base/state.h"
#include "remote/direction.h"
#include "remote/send.h"
#include "remote/wire.h"

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

}  // namespace

void noteEventForMirror() { is_wheel = 1; }

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
