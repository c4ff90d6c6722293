#include "remote/send.h"

#include "app/base/state.h"
#include "net/udp_socket.h"

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

int boxPort() { return inputPort + port_add; }

void sendToBox(const AddressText& ip, int port, std::span<const std::uint8_t> bytes) {
    if (!ip.isNone()) {
        sendThrough(InputSocket, ip, port, bytes);
    }
}

void sendUnchecked(const AddressText& ip, int port, std::span<const std::uint8_t> bytes) {
    sendThrough(InputSocket, ip, port, bytes);
}

void sendToCurrentBox(std::span<const std::uint8_t> bytes) {
    sendToBox(curIp.copy(), boxPort(), bytes);
}

void sendToOsd(const AddressText& ip, int port, std::span<const std::uint8_t> bytes) {
    if (!ip.isNone()) {
        sendThrough(KvmSetSocket, ip, port, bytes);
    }
}
