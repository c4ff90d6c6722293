#include "remote/send.h"

#include "base/state.h"
#include "net/udp_socket.h"

namespace {

void sendThrough(UDPSocket* socket, const AddressText& ip, int port,
                 std::span<const std::uint8_t> bytes) {
    if (socket != nullptr) {
        socket->SendTo(ip.c_str(), static_cast<unsigned>(port), bytes.data(),
                       static_cast<long>(bytes.size()));
    }
}

}  // namespace

void sendToBox(const Datagram& datagram) {
    if (!datagram.ip.isNone()) {
        sendUnchecked(datagram);
    }
}

void sendUnchecked(const Datagram& datagram) {
    sendThrough(InputSocket, datagram.ip, datagram.port, datagram.content());
}

void sendToOsd(const AddressText& ip, int port, std::span<const std::uint8_t> bytes) {
    if (!ip.isNone()) {
        sendThrough(KvmSetSocket, ip, port, bytes);
    }
}
