#pragma once

#include <arpa/inet.h>
#include <fcntl.h>
#include <sys/socket.h>

#include "net/udp_socket.h"
#include "unit/fixture.h"

inline constexpr const char* kLoopback = "127.0.0.1";

/// An open socket on a free port.
struct Open {
    explicit Open(bool nonBlocking = true)
        : fd(socket.CreateUDPServer(0, 1, nonBlocking, false)), port(portOf(own())) {}

    static unsigned portOf(const sockaddr_in& address) { return ntohs(address.sin_port); }
    sockaddr_in own() const {
        sockaddr_in address{};
        socklen_t size = sizeof address;
        EXPECT_EQ(getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size), 0);
        return address;
    }
    std::string receive() {
        char text[256];
        const long got = socket.RecvFrom(text, sizeof text);
        return got < 0 ? "failed" : std::string(text, static_cast<std::size_t>(got));
    }
    int send(const Open& to, const std::string& text) {
        return socket.SendTo(kLoopback, to.port, text.data(), static_cast<long>(text.size()));
    }

    UDPSocket socket;
    int fd;
    unsigned port;
};

inline bool fdIsOpen(int fd) { return fcntl(fd, F_GETFD) >= 0; }
