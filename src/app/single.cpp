#include "app/single.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <string_view>

/// An abstract socket is the lock: it has no file that could be left over.
bool becomeTheOnlyOne() {
    constexpr std::string_view kName{"\0tavrik", 7};
    sockaddr_un name{};
    name.sun_family = AF_UNIX;
    std::copy(kName.begin(), kName.end(), name.sun_path);
    const int lock = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);  // closed by the end alone
    return lock < 0 ||
           bind(lock, reinterpret_cast<const sockaddr*>(&name),
                static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + kName.size())) == 0 ||
           errno != EADDRINUSE;
}
