#include "app/single.h"

#include <sys/socket.h>

#include <cerrno>

#include "base/unix_address.h"

/// An abstract socket is the lock: it has no file that could be left over.
bool becomeTheOnlyOne() {
    const UnixAddress name("@tavrik");
    const int lock = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);  // closed by the end alone
    return lock < 0 || bind(lock, name.get(), name.size) == 0 || errno != EADDRINUSE;
}
