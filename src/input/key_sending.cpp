#include "input/key_sending.h"

#include "remote/send.h"
#include "remote/wire.h"

void sendKeyReport(std::span<const std::uint8_t> report) { sendKeys(currentTarget(), report); }

void sendKeysToLocalOsd(std::span<const std::uint8_t> report) {
    sendToOsd(AddressText{AddressText::kThisMachine}, wire::kOsdKeyPort, report);
}

void sendLocalOsd(std::string_view command) {
    sendToOsd(AddressText{AddressText::kThisMachine}, wire::kOsdCommandPort, bytesOf(command));
}

void sendOutputOsd(std::string_view command) {
    sendToOsd(curOutIp.copy(), wire::kOsdCommandPort, bytesOf(command));
}
