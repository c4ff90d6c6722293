#include "remote/box_answer.h"

#include <arpa/inet.h>

#include <array>
#include <string_view>

#include "net/dotted_text.h"
#include "net/udp_socket.h"
#include "remote/wire.h"
#include "remote/wire_text.h"

std::optional<BoxAnswer> askBox(UDPSocket& socket) {
    const BoxInControl box = boxInControl();
    socket.readEmptySocket();
    if (box.isNone()) {
        return std::nullopt;
    }
    socket.SendTo(box.curIp.c_str(), static_cast<unsigned>(wire::kQueryPort + box.port_add),
                  wire::kQuery.data(), static_cast<long>(wire::kQuery.size()));
    std::array<char, 64> buffer{};
    sockaddr_in sender{};
    const long got = socket.Receive(buffer.data(), static_cast<long>(buffer.size()), sender);
    if (got <= 0) {
        return std::nullopt;
    }
    const std::string_view text(buffer.data(), static_cast<std::size_t>(got));
    return BoxAnswer{box, dottedText(sender.sin_addr), ntohs(sender.sin_port),
                     std::string(text.substr(0, text.find('\0')))};
}
