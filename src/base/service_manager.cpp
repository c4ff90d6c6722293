#include "base/service_manager.h"

#include <sys/socket.h>

#include <cstdlib>
#include <cstring>
#include <string_view>

#include "base/unix_address.h"

void tellServiceManager(const char* state) {
    const char* const path = std::getenv("NOTIFY_SOCKET");
    const std::string_view name = path != nullptr ? path : "";
    if (name.empty() || name.size() > UnixAddress::kMostName) {
        return;
    }
    static const int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const UnixAddress to(name);
    sendto(fd, state, std::strlen(state), MSG_NOSIGNAL, to.get(), to.size);
}
