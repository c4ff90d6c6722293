#include "capture/packet_socket.h"

#include <arpa/inet.h>
#include <linux/filter.h>
#include <linux/if_arp.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <vector>

namespace capture {
namespace {

/// Lets IPv4 packets with UDP pass, to one of the two ports if there are any.
std::vector<sock_filter> filterFor(std::uint16_t first, std::uint16_t second) {
    constexpr auto kProtocol = static_cast<std::uint32_t>(SKF_AD_OFF + SKF_AD_PROTOCOL);
    constexpr std::uint32_t kAll = 0xFFFFFFFF;
    std::vector<sock_filter> program{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, kProtocol),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, ETH_P_IP, 1, 0),
        BPF_STMT(BPF_RET | BPF_K, 0),
        BPF_STMT(BPF_LD | BPF_B | BPF_ABS, 9),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, IPPROTO_UDP, 1, 0),
        BPF_STMT(BPF_RET | BPF_K, 0),
    };
    if (first != 0 || second != 0) {
        program.insert(program.end(), {
                                          BPF_STMT(BPF_LDX | BPF_B | BPF_MSH, 0),
                                          BPF_STMT(BPF_LD | BPF_H | BPF_IND, 2),
                                          BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, first, 2, 0),
                                          BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, second, 1, 0),
                                          BPF_STMT(BPF_RET | BPF_K, 0),
                                      });
    }
    program.push_back(BPF_STMT(BPF_RET | BPF_K, kAll));
    return program;
}

}  // namespace

// What comes before the filter is set would be seen unfiltered: the socket hears nothing until
// then.
PacketSocket::PacketSocket(std::uint16_t firstPort, std::uint16_t secondPort)
    : descriptor_(socket(AF_PACKET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    std::vector<sock_filter> program = filterFor(firstPort, secondPort);
    const sock_fprog filter{static_cast<unsigned short>(program.size()), program.data()};
    sockaddr_ll everywhere{};
    everywhere.sll_family = AF_PACKET;
    everywhere.sll_protocol = htons(ETH_P_ALL);  // ETH_P_IP would leave out what this machine sends
    if (descriptor_ < 0 ||
        setsockopt(descriptor_, SOL_SOCKET, SO_ATTACH_FILTER, &filter, sizeof(filter)) != 0 ||
        bind(descriptor_, reinterpret_cast<const sockaddr*>(&everywhere), sizeof(everywhere)) !=
            0) {
        problem_ = errno == EPERM ? "the capability CAP_NET_RAW is needed (root has it)"
                                  : std::string("no packets can be seen: ") + std::strerror(errno);
    }
}

std::optional<std::span<const std::uint8_t>> PacketSocket::next(int timeoutMs) {
    for (;;) {
        pollfd ready{descriptor_, POLLIN, 0};
        if (poll(&ready, 1, timeoutMs) <= 0) {
            return std::nullopt;
        }
        sockaddr_ll where{};
        socklen_t length = sizeof(where);
        const ssize_t got = recvfrom(descriptor_, buffer_.data(), buffer_.size(), 0,
                                     reinterpret_cast<sockaddr*>(&where), &length);
        const bool isSecondSight =
            where.sll_hatype == ARPHRD_LOOPBACK && where.sll_pkttype == PACKET_OUTGOING;
        if (got > 0 && !isSecondSight) {
            return std::span(buffer_.data(), static_cast<std::size_t>(got));
        }
    }
}

}  // namespace capture
