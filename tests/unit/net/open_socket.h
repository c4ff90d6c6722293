#pragma once

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <array>
#include <cstdio>
#include <functional>
#include <string>

#include "net/udp_socket.h"

inline constexpr const char* kLoopback = "127.0.0.1";

inline sockaddr_in localAddress(int fd) {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    EXPECT_EQ(getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size), 0);
    return address;
}

inline unsigned portOf(const sockaddr_in& address) { return ntohs(address.sin_port); }

/// An open socket on a free port.
struct Open {
    explicit Open(bool nonBlocking = true)
        : fd(socket.CreateUDPServer(0, 1, nonBlocking, false)), port(portOf(localAddress(fd))) {}

    std::string receive() {
        std::array<char, 256> text{};
        const long got = socket.RecvFrom(text.data(), static_cast<long>(text.size()));
        return got < 0 ? "failed" : std::string(text.data(), static_cast<std::size_t>(got));
    }

    int send(const Open& to, const std::string& text) {
        return socket.SendTo(kLoopback, to.port, text.data(), static_cast<long>(text.size()));
    }

    UDPSocket socket;
    int fd;
    unsigned port;
};

/// What `action` prints, standard output and standard error one after the other.
inline std::string printedBy(const std::function<void()>& action) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    action();
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr();
}

inline bool fdIsOpen(int fd) { return fcntl(fd, F_GETFD) >= 0; }
