#include "remote/send.h"

#include "base/state.h"
#include "net/udp_socket.h"
#include "remote/wire.h"

namespace {

void sendThrough(UDPSocket* socket, const AddressText& ip, int port,
                 std::span<const std::uint8_t> bytes) {
    if (socket == nullptr) {
        return;
    }
    socket->SendTo(ip.c_str(), static_cast<unsigned>(port), bytes.data(),
                   static_cast<long>(bytes.size()));
}

}  // namespace

BoxTarget currentTarget() {
    const std::lock_guard hold(boxGuard);
    return {curIp.copy(), inputPort + port_add, port_add, is_user_ip != 0, rel_enable != 0};
}

void sendToBox(const AddressText& ip, int port, std::span<const std::uint8_t> bytes) {
    if (!ip.isNone()) {
        sendThrough(InputSocket, ip, port, bytes);
    }
}

void sendUnchecked(const AddressText& ip, int port, std::span<const std::uint8_t> bytes) {
    sendThrough(InputSocket, ip, port, bytes);
}

void sendToCurrentBox(std::span<const std::uint8_t> bytes) {
    const BoxTarget box = currentTarget();
    sendToBox(box.ip, box.port, bytes);
}

void sendKeys(const BoxTarget& box, std::span<const std::uint8_t> report) {
    if (box.user) {
        sendToBox(box.ip, wire::kUserPort,
                  wire::userKeyboard(report[wire::kModifiersAt], report[wire::kFirstKeyAt]));
    } else {
        sendToBox(box.ip, box.port, report);
    }
}

void sendToOsd(const AddressText& ip, int port, std::span<const std::uint8_t> bytes) {
    if (!ip.isNone()) {
        sendThrough(KvmSetSocket, ip, port, bytes);
    }
}
