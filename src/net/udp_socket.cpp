#include "net/udp_socket.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <net/if.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "base/clock.h"
#include "base/once_a_minute.h"
#include "base/waiting.h"
#include "net/dotted_text.h"
#include "net/network_info.h"
#include "net/socket_options.h"

namespace {

constexpr int kReceiveWaitMs = 20;
constexpr long kServerTimeOutUs = 35000;
constexpr long kTimeOutUs = 15000;
constexpr int kMostDrained = 1024;

long takeDatagram(int fd, void* buffer, long length, int flags, sockaddr_in& sender) {
    sockaddr_in from{};
    socklen_t size = sizeof from;
    const ssize_t got = recvfrom(fd, buffer, static_cast<std::size_t>(length), flags,
                                 reinterpret_cast<sockaddr*>(&from), &size);
    if (got >= 0) {
        sender = from;
    }
    return got;
}

/// The address of a dotted text as it is usually written, or as inet_aton takes it. (Alone, that is
/// a quarter of what stands between a key and its datagram.)
bool takeAddress(const char* text, in_addr& address) {
    std::uint32_t value = 0;
    const char* at = text;
    for (int part = 0; part < 4; ++part) {
        unsigned number = 0;
        const char* const begin = at;
        for (; *at >= '0' && *at <= '9' && at - begin < 3; ++at) {
            number = number * 10 + static_cast<unsigned>(*at - '0');
        }
        const bool octal = *begin == '0' && at - begin > 1;
        if (at == begin || octal || number > 255 || *at != (part < 3 ? '.' : '\0')) {
            return inet_aton(text, &address) != 0;
        }
        value = value << 8 | number;
        ++at;
    }
    address.s_addr = htonl(value);
    return true;
}

/// Datagrams that could not be sent, by whichever socket.
Guarded<OnceAMinute> sendFailures;

void tellSendFailure(const sockaddr_in& to, int error) {
    const unsigned count = sendFailures.with(
        [now = OnceAMinute::Clock::now()](OnceAMinute& failures) { return failures.count(now); });
    if (count > 0) {
        std::printf("cannot send to %s: %s (%u such datagrams)\n", dottedText(to.sin_addr).c_str(),
                    std::strerror(error), count);
    }
}

int sendDatagram(int fd, const sockaddr_in& to, const void* buffer, long length) {
    const auto sent = static_cast<int>(sendto(fd, buffer, static_cast<std::size_t>(length), 0,
                                              reinterpret_cast<const sockaddr*>(&to), sizeof to));
    if (sent < 0) {
        const int error = errno;
        tellSendFailure(to, error);
        errno = error;
    }
    return sent;
}

bool bindTo(int fd, const sockaddr_in& address) {
    if (bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) < 0) {
        std::perror("bind error");
        return false;
    }
    return true;
}

sockaddr_in ipv4(in_addr_t address, unsigned port) {
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_port = htons(static_cast<std::uint16_t>(port));
    result.sin_addr.s_addr = address;
    return result;
}

void closeUnlessNone(int fd) {
    if (fd != -1) {
        close(fd);
    }
}

}  // namespace

UDPSocket::~UDPSocket() { CloseUDPSocket(); }

void UDPSocket::CloseUDPSocket() { closeUnlessNone(descriptor_.exchange(-1)); }

int UDPSocket::CreateUDPServer(unsigned port, unsigned receiveTimeOut, bool nonBlocking,
                               bool reuse) {
    const sockaddr_in own = ipv4(INADDR_ANY, port);
    own_.set(own);
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        std::perror("can't create socket file");
    }
    closeUnlessNone(descriptor_.exchange(fd));
    if (fd < 0) {
        return -1;
    }
    if (reuse && setSocketOption(descriptor_, SOL_SOCKET, SO_REUSEADDR, 1,
                                 "setsockopt():SO_REUSEADDR") == 0) {
        return -1;
    }
    if (nonBlocking) {
        setnonblocking();
    }
    nonBlocking_ = nonBlocking;
    if (receiveTimeOut != 0) {
        setReceiveTimeOut(fd, kServerTimeOutUs);
    }
    return bindTo(fd, own) ? fd : -1;
}

long UDPSocket::Receive(void* buffer, long length, sockaddr_in& sender) {
    if (length < 0) {
        return -1;
    }
    const int fd = descriptor_;
    if (!nonBlocking_) {
        return takeDatagram(fd, buffer, length, 0, sender);
    }
    const int ready = waitUntilReadable(fd, answerWait(kReceiveWaitMs));
    if (ready < 0) {
        std::perror("select rcvfrom timeout");
        return -1;
    }
    return ready == 0 ? 0 : takeDatagram(fd, buffer, length, MSG_DONTWAIT, sender);
}

long UDPSocket::RecvFrom(void* buffer, long length) {
    sockaddr_in sender{};
    const long got = Receive(buffer, length, sender);
    if (sender.sin_family != AF_UNSPEC) {
        peer_.set(sender);
    }
    return got;
}

int UDPSocket::SendTo(const void* buffer, long length) {
    if (length < 0) {
        return -1;
    }
    const sockaddr_in to = own_.copy();
    if (to.sin_addr.s_addr == 0) {
        std::puts("please intput client_ip and client_port");
        return -1;
    }
    if (connected != 0) {
        return static_cast<int>(write(descriptor_, buffer, static_cast<std::size_t>(length)));
    }
    return sendDatagram(descriptor_, to, buffer, length);
}

int UDPSocket::SendTo(const char* ip, unsigned port, const void* buffer, long length) {
    in_addr address{};
    if (ip == nullptr || buffer == nullptr || length < 0 || !takeAddress(ip, address)) {
        return -1;
    }
    return sendDatagram(descriptor_, ipv4(address.s_addr, port), buffer, length);
}

int UDPSocket::EchoTo(const void* buffer, long length) {
    const sockaddr_in to = peer_.copy();
    if (to.sin_addr.s_addr == 0 || buffer == nullptr || length < 0) {
        return -1;
    }
    const char* const bytes = static_cast<const char*>(buffer);
    const std::string text(bytes, strnlen(bytes, static_cast<std::size_t>(length)));
    std::printf("Receive client (%s:%u) on socket: %d  \nmessage:%s\n",
                dottedText(to.sin_addr).c_str(), static_cast<unsigned>(ntohs(to.sin_port)),
                descriptor_.load(), text.c_str());
    return sendDatagram(descriptor_, to, buffer, length);
}

sockaddr_in UDPSocket::GetClientSockaddr() const { return peer_.copy(); }

int UDPSocket::AddMemberShip(const char* group, const char* interface) {
    if (group == nullptr || setSocketOption(descriptor_, IPPROTO_IP, IP_MULTICAST_LOOP, 1,
                                            "setsockopt():IP_MULTICAST_LOOP") == 0) {
        return 0;
    }
    ip_mreq request{};
    request.imr_multiaddr.s_addr = inet_addr(group);
    membership_.set(request);
    if (interface != nullptr) {
        std::array<char, NetworkInfo::kTextSize> text{};
        if (NetworkInfo::GetNetworkInfo(interface, NetworkInfo::kAddress, text.data()) == 0 ||
            text[0] == '\0') {
            return 0;
        }
        request.imr_interface.s_addr = inet_addr(text.data());
        membership_.set(request);
    }
    if (setsockopt(descriptor_, IPPROTO_IP, IP_ADD_MEMBERSHIP, &request, sizeof request) < 0) {
        std::perror("setsockopt():IP_ADD_MEMBERSHIP");
        return 0;
    }
    return 1;
}

UDPSocket::Repair UDPSocket::repairPort(unsigned port) {
    sockaddr_in own{};
    socklen_t size = sizeof own;
    const int fd = descriptor_;
    if (getsockname(fd, reinterpret_cast<sockaddr*>(&own), &size) == 0 &&
        own.sin_port == htons(static_cast<std::uint16_t>(port))) {
        return Repair::kNotNeeded;
    }
    // A descriptor that has sent has some other port by now: a new one takes its place.
    const int fresh = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const sockaddr_in wanted = ipv4(INADDR_ANY, port);
    const int one = 1;
    const bool bound = fresh >= 0 &&
                       setsockopt(fresh, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one) == 0 &&
                       bind(fresh, reinterpret_cast<const sockaddr*>(&wanted), sizeof wanted) == 0;
    if (bound && fd < 0) {
        descriptor_ = fresh;
        return Repair::kDone;
    }
    const bool replaced = bound && dup3(fresh, fd, O_CLOEXEC) == fd;
    closeUnlessNone(fresh);
    return replaced ? Repair::kDone : Repair::kFailed;
}

UDPSocket::Repair UDPSocket::repairMemberShip(const char* group, const char* interface) {
    ip_mreqn request{};
    request.imr_multiaddr.s_addr = inet_addr(group);
    request.imr_ifindex = static_cast<int>(if_nametoindex(interface));
    if (request.imr_ifindex == 0) {
        return Repair::kFailed;
    }
    if (setsockopt(descriptor_, IPPROTO_IP, IP_ADD_MEMBERSHIP, &request, sizeof request) == 0) {
        return Repair::kDone;
    }
    return errno == EADDRINUSE ? Repair::kNotNeeded : Repair::kFailed;
}

bool UDPSocket::waitForDatagram(int milliseconds) const {
    const int fd = descriptor_;
    if (fd < 0) {
        sleepMicroseconds(std::int64_t{milliseconds} * 1000);
        return false;
    }
    return waitUntilReadable(fd, milliseconds) != 0;
}

int UDPSocket::DropMemberShip() {
    const ip_mreq request = membership_.copy();
    if (setsockopt(descriptor_, IPPROTO_IP, IP_DROP_MEMBERSHIP, &request, sizeof request) < 0) {
        std::perror("setsockopt():IP_DROP_MEMBERSHIP");
        return 0;
    }
    return 1;
}

int UDPSocket::AddBroadCast(const char* interface) {
    if (setSocketOption(descriptor_, SOL_SOCKET, SO_BROADCAST, 1, "setsockopt():SO_BROADCAST") ==
        0) {
        return 0;
    }
    in_addr_t destination = INADDR_BROADCAST;
    int result = 1;
    if (interface != nullptr) {
        std::array<char, NetworkInfo::kTextSize> text{};
        result = NetworkInfo::GetNetworkInfo(interface, NetworkInfo::kBroadcast, text.data());
        destination = inet_addr(text.data());
    }
    if (result != 0) {
        own_.with([&](sockaddr_in& own) { own.sin_addr.s_addr = destination; });
    }
    return result;
}

int UDPSocket::BindLocalAddr(const char* interface, unsigned port, bool reuse) {
    if (reuse && setSocketOption(descriptor_, SOL_SOCKET, SO_REUSEADDR, 1,
                                 "setsockopt():SO_REUSEADDR") == 0) {
        return 0;
    }
    std::array<char, NetworkInfo::kTextSize> text{};
    const int result = NetworkInfo::GetNetworkInfo(interface, NetworkInfo::kAddress, text.data());
    if (result == 0 || !bindTo(descriptor_, ipv4(inet_addr(text.data()), port))) {
        return 0;
    }
    return result;
}

int UDPSocket::readEmptySocket() {
    const int fd = descriptor_;
    std::array<char, 256> scratch;
    for (int drained = 0; drained < kMostDrained; ++drained) {
        const int waiting = waitUntilReadable(fd, 0);
        if (waiting < 0) {
            return 1;
        }
        if (waiting == 0) {
            break;
        }
        sockaddr_in sender{};
        if (takeDatagram(fd, scratch.data(), scratch.size(), MSG_DONTWAIT, sender) >= 0) {
            peer_.set(sender);
        }
    }
    std::puts("socket read emput");
    return 0;
}

int UDPSocket::setnonblocking() {
    // The descriptor's close-on-exec flags serve as its file status flags, on purpose: the kernel
    // ignores the access-mode bit that FD_CLOEXEC falls on, so what is set is O_NONBLOCK alone.
    const int flags = fcntl(descriptor_, F_GETFD);
    return flags >= 0 && fcntl(descriptor_, F_SETFL, flags | O_NONBLOCK) >= 0 ? 1 : 0;
}

int UDPSocket::setTimeOut() {
    setReceiveTimeOut(descriptor_, kTimeOutUs);
    return 0;
}

int UDPSocket::GetRevBuf() {
    return getSocketOption(descriptor_, SOL_SOCKET, SO_RCVBUF, "getsockopt():SO_RCVBUF");
}

int UDPSocket::GetSndBuf() {
    return getSocketOption(descriptor_, SOL_SOCKET, SO_SNDBUF, "getsockopt():SO_SNDBUF");
}

int UDPSocket::SetRevBuf(int size) {
    return setSocketOption(descriptor_, SOL_SOCKET, SO_RCVBUF, size, "setsockopt():SO_RCVBUF");
}

int UDPSocket::SetSndBuf(int size) {
    return setSocketOption(descriptor_, SOL_SOCKET, SO_SNDBUF, size, "setsockopt():SO_SNDBUF");
}

// Both getters report the same text, on purpose.
int UDPSocket::GetIpTTL() {
    return getSocketOption(descriptor_, IPPROTO_IP, IP_TTL, "setsockopt():IP_TTL");
}

int UDPSocket::GetMulticastTTL() {
    return getSocketOption(descriptor_, IPPROTO_IP, IP_MULTICAST_TTL, "setsockopt():IP_TTL");
}

int UDPSocket::SetIpTTL(int ttl) {
    return setSocketOption(descriptor_, IPPROTO_IP, IP_TTL, ttl, "setsockopt():IP_TTL");
}

int UDPSocket::SetMulticastTTL(int ttl) {
    return setSocketOption(descriptor_, IPPROTO_IP, IP_MULTICAST_TTL, ttl,
                           "setsockopt():IP_MULTICAST_TTL");
}
