#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/ioctl.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

/// Preloaded into the daemon: holds one call up, so that what happens meanwhile is no accident of
/// timing, or makes calls fail. The file named by HELD_CALLS is removed by the call that it meets.
/// It holds "WHAT NUMBER", where WHAT is `press` (a report to a box that presses a key) or `save`
/// (an fsync) for so many milliseconds, or `deny`: such a report fails with that errno. Or
/// "CALL NUMBER TIMES": so many calls of that name fail with that errno from now on; `node` is the
/// opening of a device, `probe` the reading of a single record.

namespace {

struct Order {
    std::array<char, 16> word{};
    int number = 0, times = 0;
};

/// What the file holds; read without the calls that are replaced below.
Order readOrder() {
    Order order;
    const char* path = std::getenv("HELD_CALLS");
    const long fd =
        path != nullptr ? syscall(SYS_openat, AT_FDCWD, path, O_RDONLY | O_CLOEXEC) : -1;
    if (fd >= 0) {
        std::array<char, 64> text{};
        syscall(SYS_read, fd, text.data(), text.size() - 1);
        syscall(SYS_close, fd);
        std::sscanf(text.data(), "%15s %d %d", order.word.data(), &order.number, &order.times);
    }
    return order;
}

/// The number when the next such call is meant, else 0.
int numberFor(std::string_view what) {
    const Order order = readOrder();
    return what == order.word.data() && unlink(std::getenv("HELD_CALLS")) == 0 ? order.number : 0;
}

std::atomic<int> failing{0};  ///< so many more of them
int failure = 0;
std::array<char, 16> failingCall{};

/// True when this call is one that has to fail; errno is set.
bool fails(std::string_view call) {
    if (const Order order = readOrder();
        order.times > 0 && call == order.word.data() && unlink(std::getenv("HELD_CALLS")) == 0) {
        failingCall = order.word;
        failure = order.number;
        failing = order.times;
    }
    if (failing > 0 && call == failingCall.data() && failing-- > 0) {
        errno = failure;
        return true;
    }
    return false;
}

void hold(std::string_view what) {
    if (const int milliseconds = numberFor(what)) {
        usleep(static_cast<useconds_t>(milliseconds) * 1000);
    }
}

bool pressesKey(std::string_view bytes) {
    return bytes.size() == 11 && bytes[0] == 'W' && bytes[2] == 1 && bytes[5] != 0;
}

template <class Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" ssize_t sendto(int fd, const void* buffer, size_t length, int flags, const sockaddr* to,
                          socklen_t size) {
    static auto* const real = next<decltype(sendto)>("sendto");
    if (fails("sendto")) {
        return -1;
    }
    const std::string_view bytes(static_cast<const char*>(buffer), length);
    if (pressesKey(bytes)) {
        hold("press");
        if (const int error = numberFor("deny")) {
            errno = error;
            return -1;
        }
    }
    return real(fd, buffer, length, flags, to, size);
}

extern "C" int fsync(int fd) {
    static auto* const real = next<decltype(fsync)>("fsync");
    hold("save");
    return fails("fsync") ? -1 : real(fd);
}

extern "C" int socket(int domain, int type, int protocol) noexcept {
    static auto* const real = next<int(int, int, int)>("socket");
    return fails("socket") ? -1 : real(domain, type, protocol);
}

extern "C" ssize_t recvfrom(int fd, void* buffer, size_t size, int flags, sockaddr* from,
                            socklen_t* length) {
    static auto* const real = next<decltype(recvfrom)>("recvfrom");
    return fails("recvfrom") ? -1 : real(fd, buffer, size, flags, from, length);
}

extern "C" ssize_t read(int fd, void* buffer, size_t size) {
    static auto* const real = next<decltype(read)>("read");
    const bool isProbe = size == 16;  // one record
    return fails("read") || (isProbe && fails("probe")) ? -1 : real(fd, buffer, size);
}

extern "C" int poll(pollfd* waits, nfds_t count, int milliseconds) {
    static auto* const real = next<decltype(poll)>("poll");
    return fails("poll") ? -1 : real(waits, count, milliseconds);
}

extern "C" int select(int count, fd_set* readable, fd_set* writable, fd_set* problems,
                      timeval* limit) {
    static auto* const real = next<decltype(select)>("select");
    return fails("select") ? -1 : real(count, readable, writable, problems, limit);
}

extern "C" int open(const char* path, int flags, ...) {
    static auto* const real = next<decltype(open)>("open");
    va_list rest;
    va_start(rest, flags);
    const unsigned mode = (flags & O_CREAT) != 0 ? va_arg(rest, unsigned) : 0;
    va_end(rest);
    const bool isNode = std::strstr(path, "/dev/input/") != nullptr;
    return fails("open") || (isNode && fails("node")) ? -1 : real(path, flags, mode);
}

extern "C" int ioctl(int fd, unsigned long request, ...) noexcept {
    static auto* const real = next<int(int, unsigned long, ...)>("ioctl");
    va_list rest;
    va_start(rest, request);
    void* const argument = va_arg(rest, void*);
    va_end(rest);
    return fails("ioctl") ? -1 : real(fd, request, argument);
}

extern "C" int rename(const char* from, const char* to) noexcept {
    static auto* const real = next<int(const char*, const char*)>("rename");
    return fails("rename") ? -1 : real(from, to);
}

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*run)(void*), void* argument) noexcept {
    static auto* const real =
        next<int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*)>("pthread_create");
    return fails("thread") ? errno : real(thread, attributes, run, argument);
}
