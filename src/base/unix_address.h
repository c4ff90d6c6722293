#pragma once

#include <sys/socket.h>
#include <sys/un.h>

#include <cstddef>
#include <string_view>

/// The address of a Unix socket: a path, or behind "@" the name of an abstract one, which has no
/// file. Pure, any thread.
struct UnixAddress {
    /// Cuts a name that is too long; whoever minds looks at kMostName.
    explicit UnixAddress(std::string_view name) {
        name = name.substr(0, kMostName);
        name.copy(address.sun_path, name.size());
        if (name.starts_with('@')) {
            address.sun_path[0] = '\0';
        }
        size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
    }
    const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&address); }

    static constexpr std::size_t kMostName = sizeof(sockaddr_un::sun_path) - 1;
    sockaddr_un address{AF_UNIX, {}};
    socklen_t size = 0;
};
