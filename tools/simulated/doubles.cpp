#include "simulated/doubles.h"

#include <arpa/inet.h>
#include <sys/socket.h>

#include <cerrno>

namespace simulated {

Console* running = nullptr;

}  // namespace simulated

namespace {

using simulated::kBoxPort;
using simulated::kFirstFd;
using simulated::running;

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): the names that the linker's --wrap asks for
extern "C" {

int __real_ioctl(int, unsigned long, void*);

ssize_t __wrap_sendto(int fd, const void* bytes, std::size_t size, int, const sockaddr* to,
                      socklen_t) {
    const auto* address = reinterpret_cast<const sockaddr_in*>(to);
    if (running != nullptr) {
        running->takeDatagram({inet_ntoa(address->sin_addr), ntohs(address->sin_port), 0},
                              {static_cast<const char*>(bytes), size}, fd);
    }
    return static_cast<ssize_t>(size);
}

ssize_t __wrap_recvfrom(int fd, void* bytes, std::size_t size, int, sockaddr* from, socklen_t*) {
    const auto answer = running != nullptr ? running->takeAnswer(fd) : std::nullopt;
    if (!answer) {
        errno = EAGAIN;
        return -1;
    }
    *reinterpret_cast<sockaddr_in*>(from) = {
        AF_INET, htons(kBoxPort), {inet_addr(answer->first.c_str())}, {}};
    return static_cast<ssize_t>(answer->second.copy(static_cast<char*>(bytes), size));
}

/// The keyboards' lights are off.
int __wrap_ioctl(int fd, unsigned long request, void* data) {
    return fd >= kFirstFd ? 0 : __real_ioctl(fd, request, data);
}

}  // extern "C"

// NOLINTEND(bugprone-reserved-identifier)
