#include "unit/remote/between.h"

#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstdint>

// The linker leads the calls of these functions here (--wrap).

extern "C" {

ssize_t __real_sendto(int, const void*, std::size_t, int, const sockaddr*, socklen_t);
int __real_ioctl(int, unsigned long, void*);

ssize_t __wrap_sendto(int fd, const void* bytes, std::size_t size, int flags, const sockaddr* to,
                      socklen_t length) {
    if (beforeSend) {
        beforeSend(fd, {static_cast<const char*>(bytes), size});
    }
    if (sendError != 0) {
        errno = sendError;
        return -1;
    }
    return __real_sendto(fd, bytes, size, flags, to, length);
}

int __wrap_ioctl(int fd, unsigned long request, void* data) {
    if (lightsOfKeyboard < 0 || _IOC_TYPE(request) != 'E') {
        return __real_ioctl(fd, request, data);
    }
    *static_cast<std::uint8_t*>(data) = static_cast<std::uint8_t>(lightsOfKeyboard);
    return 1;
}

}  // extern "C"

bool interrupted(int moment, const std::function<void()>& first,
                 const std::function<void()>& second) {
    bool counts = true;
    const auto count = [&] {
        if (counts && moment-- == 0) {
            counts = false;
            second();
            counts = true;
        }
    };
    const auto sends = beforeSend;
    beforeSend = [&](int fd, std::string_view bytes) {
        if (sends) {
            sends(fd, bytes);
        }
        count();
    };
    beforeGuard = count;
    first();
    beforeGuard = nullptr;
    beforeSend = sends;
    return moment < 0;
}
