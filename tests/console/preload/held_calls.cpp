#include <dlfcn.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

/// Preloaded into the daemon: holds one call up, so that what happens meanwhile is no accident of
/// timing. The file named by HELD_CALLS holds "WHAT MILLISECONDS" and is removed by the call that
/// it meets. WHAT: `press` (before a report to a box that presses a key), `notice` (after a text
/// such as OSDSTART has left), `save` (an fsync).

namespace {

/// Takes the order when it is for `what`; 0 when it is not.
int takeOrder(std::string_view what) {
    const char* path = std::getenv("HELD_CALLS");
    std::FILE* file = path != nullptr ? std::fopen(path, "re") : nullptr;
    if (file == nullptr) {
        return 0;
    }
    std::array<char, 16> word{};
    int milliseconds = 0;
    const bool meant = std::fscanf(file, "%15s %d", word.data(), &milliseconds) == 2 &&
                       what == word.data() && unlink(path) == 0;
    std::fclose(file);
    return meant ? milliseconds : 0;
}

void hold(std::string_view what) { usleep(static_cast<useconds_t>(takeOrder(what)) * 1000); }

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
    }
    const ssize_t sent = real(fd, buffer, length, flags, to, size);
    if (bytes.ends_with("START")) {
        hold("notice");
    }
    return sent;
}

extern "C" int fsync(int fd) {
    static auto* const real = next<decltype(fsync)>("fsync");
    hold("save");
    return real(fd);
}
