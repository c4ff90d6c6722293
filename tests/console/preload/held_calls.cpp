#include <dlfcn.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

/// Preloaded into the daemon: holds one call up, so that what happens meanwhile is no accident of
/// timing, or makes it fail. The file named by HELD_CALLS holds "WHAT NUMBER" and is removed by the
/// call that it meets. WHAT: `press` (a report to a box that presses a key) or `save` (an fsync)
/// for so many milliseconds; `deny`: such a report fails with that errno.

namespace {

/// The number when the next such call is meant, else 0.
int numberFor(std::string_view what) {
    const char* path = std::getenv("HELD_CALLS");
    std::FILE* file = path != nullptr ? std::fopen(path, "re") : nullptr;
    if (file == nullptr) {
        return 0;
    }
    std::array<char, 16> word{};
    int number = 0;
    const bool meant = std::fscanf(file, "%15s %d", word.data(), &number) == 2 &&
                       what == word.data() && unlink(path) == 0;
    std::fclose(file);
    return meant ? number : 0;
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
    return real(fd);
}
