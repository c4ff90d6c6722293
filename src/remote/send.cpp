#include "remote/send.h"

#include "base/state.h"
#include "net/udp_socket.h"

namespace {

/// False when it could not leave.
bool sendThrough(UDPSocket* socket, const AddressText& ip, int port,
                 std::span<const std::uint8_t> bytes) {
    return socket == nullptr || socket->SendTo(ip.c_str(), static_cast<unsigned>(port),
                                               bytes.data(), static_cast<long>(bytes.size())) >= 0;
}

}  // namespace

bool sendToBox(const Datagram& datagram) { return datagram.ip.isNone() || sendUnchecked(datagram); }

bool sendUnchecked(const Datagram& datagram) {
    return sendThrough(InputSocket, datagram.ip, datagram.port, datagram.content());
}

void sendToOsd(const AddressText& ip, int port, std::span<const std::uint8_t> bytes) {
    if (!ip.isNone()) {
        sendThrough(KvmSetSocket, ip, port, bytes);
    }
}
