#include "remote/report_forms.h"

#include "remote/reports.h"

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
        if (box.rel_enable) {
            motion.takeRemote();  // told, though not as motion
        }
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
