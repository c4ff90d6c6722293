#include "remote/reports.h"

#include <algorithm>

#include "base/state.h"
#include "remote/report_forms.h"

namespace {

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

void tellPointer(Motion& motion) { sendReport(BoxReport::pointer({}), motion); }

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

void releaseAll(Motion& motion) {
    tellBox([&motion](const BoxInControl& box) {
        return both(keysFor(box, wire::kKeyRelease),
                    pointerFor(box, box.curIp, wire::Absolute{}, motion));
    });
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
