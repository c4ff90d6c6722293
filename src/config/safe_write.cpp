// Files above 2 GiB can be replaced on a 32-bit board too.
#ifndef _FILE_OFFSET_BITS
#define _FILE_OFFSET_BITS 64  // NOLINT(bugprone-reserved-identifier)
#endif

#include "config/safe_write.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "base/descriptor.h"

std::optional<FileKind> kindOf(const std::string& path) {
    struct stat info {};
    if (stat(path.c_str(), &info) != 0) {
        return std::nullopt;
    }
    return FileKind{S_ISREG(info.st_mode), info.st_mode & 0777, info.st_uid, info.st_gid};
}

bool doneOrNotKnown(int result) {
    return result == 0 || errno == EINVAL || errno == EPERM || errno == ENOTSUP;
}

bool writeAll(int fd, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = ::write(fd, text.data(), text.size());
        if (count > 0) {
            text.remove_prefix(static_cast<std::size_t>(count));
        } else if (count == 0 || errno != EINTR) {
            return false;
        }
    }
    return true;
}

void syncDirectory(const std::string& directory) {
    const Descriptor fd(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    fsync(fd);
}

Temporary writeTemporary(const std::string& target, const std::string& text,
                         const std::optional<FileKind>& like) {
    Temporary temporary{target + std::string(kTemporary)};
    Descriptor fd(mkostemp(temporary.name.data(), O_CLOEXEC));
    if (fd < 0) {
        return {"", false, errno};
    }
    const bool written = writeAll(fd, text) &&
                         (!like || doneOrNotKnown(fchown(fd, like->owner, like->group))) &&
                         doneOrNotKnown(fchmod(fd, like ? like->permissions : mode_t{0644})) &&
                         doneOrNotKnown(fsync(fd));
    temporary.error = written ? 0 : errno;
    temporary.complete = fd.close() && written;
    if (written && !temporary.complete) {
        temporary.error = errno;
    }
    return temporary;
}
