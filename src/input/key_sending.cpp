#include "input/key_sending.h"

#include "remote/send.h"
#include "remote/wire.h"

void sendKeyReport(inputevent_& events, std::span<const std::uint8_t> report) {
    if (is_user_ip) {
        events.user_send_mk(kKeyboard, nullptr, report.data());
    } else {
        sendToCurrentBox(report);
    }
}

void sendLocalOsd(std::string_view command) {
    sendToOsd(AddressText{"127.0.0.1"}, wire::kOsdCommandPort, bytesOf(command));
}

void sendOutputOsd(std::string_view command) {
    sendToOsd(curOutIp.copy(), wire::kOsdCommandPort, bytesOf(command));
}
