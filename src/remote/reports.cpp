#include "remote/reports.h"

#include <algorithm>
#include <cstdio>

#include "base/state.h"
#include "remote/mirror.h"
#include "remote/pointer_buffer.h"

namespace {

using Bytes = std::span<const std::uint8_t>;

Message message(const AddressText& ip, std::int32_t port, Bytes bytes) {
    Message one;
    one.add({ip, port, bytes});
    return one;
}

Message userKeys(const AddressText& ip, Bytes report) {
    return message(ip, wire::kUserPort,
                   wire::userKeyboard(report[wire::kModifiersAt], report[wire::kFirstKeyAt]));
}

Message userPointer(const AddressText& ip, Bytes report, const Position& at) {
    return message(ip, wire::kUserPort,
                   wire::userPointer(report[wire::kButtonsAt], at.x, at.y, report[wire::kWheelAt]));
}

Message keysFor(const BoxInControl& box, Bytes report) {
    return box.is_user_ip ? userKeys(box.curIp, report) : message(box.curIp, box.port(), report);
}

/// A pointer report in the form that the box takes.
Message pointerFor(const BoxInControl& box, const AddressText& ip, Bytes report, Motion& motion) {
    if (box.is_user_ip) {
        return userPointer(ip, report, pointerPosition());
    }
    if (box.rel_enable) {
        const auto [dx, dy] = motion.takeRemote();
        return message(ip, box.port(),
                       wire::relative(report[wire::kButtonsAt], dx, dy, report[wire::kWheelAt]));
    }
    const Position at = pointerPosition();
    return message(ip, box.port(),
                   wire::absolute(report[wire::kButtonsAt], at.x, at.y, report[wire::kWheelAt]));
}

/// Both of them, the second behind the first.
Message both(Message first, const Message& second) {
    for (const Datagram& datagram : second) {
        first.add(datagram);
    }
    return first;
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

/// `ip`, or the box in control when it is null.
AddressText addressOf(const char* ip, const BoxInControl& box) {
    return ip != nullptr ? AddressText{ip} : box.curIp;
}

}  // namespace

BoxReport BoxReport::keys(Bytes report, Kind kind) {
    BoxReport made{kind, {}};
    std::copy_n(report.begin(), std::min(report.size(), made.bytes.size()), made.bytes.begin());
    return made;
}

BoxReport BoxReport::pointer(const wire::Absolute& report, Kind kind) { return keys(report, kind); }

void sendReport(const BoxReport& report, Motion& motion) {
    const Bytes absolute = Bytes(report.bytes).first(wire::Absolute{}.size());
    tellBox([&](const BoxInControl& box) {
        switch (report.kind) {
            case BoxReport::Kind::kKeysAtBasePort:
                return message(box.curIp, box.inputPort, report.bytes);
            case BoxReport::Kind::kPointer:
                return pointerFor(box, box.curIp, absolute, motion);
            case BoxReport::Kind::kAsItStands:
                return message(box.curIp, box.port(), absolute);
            case BoxReport::Kind::kKeys:
                break;
        }
        return keysFor(box, report.bytes);
    });
}

Position pointerPosition() {
    return currentInfo.with([](const currentCtl& now) { return pointerOf(now); });
}

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
        noteEventForMirror();
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

void tellPointer(Motion& motion) { sendReport(BoxReport::pointer({}), motion); }

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

int releaseKey() {
    tellBox(
        [](const BoxInControl& box) { return message(box.curIp, box.port(), wire::kKeyRelease); });
    return 1;
}

int releaseInput(const char* ip) {
    tellBox([ip](const BoxInControl& box) {
        const AddressText to = addressOf(ip, box);
        if (box.is_user_ip) {
            return userKeys(box.curIp, wire::kKeyRelease);
        }
        wire::Absolute parked = wire::kPointerRelease;
        wire::put16(parked.data(), wire::kXAt, box.XRIGHT);
        return both(message(to, box.port(), parked), message(to, box.port(), wire::kKeyRelease));
    });
    return 1;
}

int sendRelease(Motion& motion) {
    tellBox([&motion](const BoxInControl& box) {
        if (box.rel_enable) {
            motion.takeRemote();
        }
        // The reverse of releaseInput's test: the user-list form goes to the boxes not listed.
        if (!box.is_user_ip) {
            return userKeys(box.curIp, wire::kKeyRelease);
        }
        const Position at = pointerPosition();
        return both(message(box.curIp, box.port(), wire::absolute(0, at.x, at.y, 0)),
                    message(box.curIp, box.port(), wire::kKeyRelease));
    });
    return 0;
}
