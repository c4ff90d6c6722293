#include "ctl/channel.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>

#include "remote/wire_text.h"

namespace ctl {

Channel::Channel() : descriptor_(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    constexpr int kRouters = 64;  // a site may have several networks
    setsockopt(descriptor_, IPPROTO_IP, IP_MULTICAST_TTL, &kRouters, sizeof(kRouters));
}

std::string Channel::send(const std::string& address, const std::string& text) const {
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(wire::kCommandPort);
    if (inet_pton(AF_INET, address.c_str(), &to.sin_addr) != 1) {
        return address + " is no address";
    }
    const ssize_t sent = sendto(descriptor_, text.data(), text.size(), 0,
                                reinterpret_cast<const sockaddr*>(&to), sizeof(to));
    return sent == static_cast<ssize_t>(text.size()) ? "" : std::strerror(errno);
}

std::optional<std::string> Channel::status(const std::string& address, int timeoutMs) const {
    using Clock = std::chrono::steady_clock;
    if (!send(address, wire::statusQuery(address)).empty()) {
        return std::nullopt;
    }
    const auto end = Clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
        pollfd ready{descriptor_, POLLIN, 0};
        if (left < 0 || poll(&ready, 1, static_cast<int>(left)) <= 0) {
            return std::nullopt;
        }
        wire::Status answer{};
        sockaddr_in from{};
        socklen_t length = sizeof(from);
        const ssize_t got = recvfrom(descriptor_, answer.data(), answer.size(), 0,
                                     reinterpret_cast<sockaddr*>(&from), &length);
        if (got <= 0 || ntohs(from.sin_port) != wire::kCommandPort) {
            continue;
        }
        std::string text(answer.data(), strnlen(answer.data(), static_cast<std::size_t>(got)));
        const std::string expected = std::string(wire::kStatusHead) + address + "\n";
        if (text.starts_with(expected)) {
            return text;
        }
    }
}

}  // namespace ctl
