#include "base/service_manager.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "base/descriptor.h"

void tellServiceManager(const char* state) {
    const char* const path = std::getenv("NOTIFY_SOCKET");
    sockaddr_un to{};
    to.sun_family = AF_UNIX;
    const std::string_view name = path != nullptr ? path : "";
    if (name.empty() || name.size() >= sizeof to.sun_path) {
        return;
    }
    name.copy(to.sun_path, name.size());
    if (name.front() == '@') {
        to.sun_path[0] = '\0';  // an abstract one
    }
    const Descriptor fd(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    sendto(fd, state, std::strlen(state), MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&to),
           static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size()));
}
