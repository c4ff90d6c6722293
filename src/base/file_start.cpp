// Files above 2 GiB are refused as too large, not taken for missing, on a 32-bit board too.
#ifndef _FILE_OFFSET_BITS
#define _FILE_OFFSET_BITS 64  // NOLINT(bugprone-reserved-identifier)
#endif

#include "base/file_start.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "base/descriptor.h"

namespace {

constexpr std::size_t kChunk = 65536;

}  // namespace

FileText readFileStart(const std::string& path, std::size_t limit) {
    const Descriptor fd(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat info {};
    if (fd < 0) {
        return {errno == ENOENT ? FileState::kMissing : FileState::kUnreadable, {}};
    }
    if (fstat(fd, &info) != 0) {
        return {FileState::kUnreadable, {}};
    }
    if (!S_ISREG(info.st_mode)) {
        return {FileState::kNotRegular, {}};
    }
    // A file of the kernel's tells no size.
    const auto size = static_cast<std::size_t>(info.st_size);
    const std::size_t chunk = size > 0 ? std::min(size + 1, kChunk) : kChunk;
    std::string text;
    while (text.size() < limit) {
        const std::size_t have = text.size();
        text.resize(have + std::min(chunk, limit - have));
        const ssize_t count = ::read(fd, text.data() + have, text.size() - have);
        text.resize(have + (count > 0 ? static_cast<std::size_t>(count) : 0));
        if (count == 0) {
            break;
        }
        if (count < 0 && errno != EINTR) {
            return {FileState::kUnreadable, {}};
        }
    }
    return {FileState::kRead, std::move(text)};
}
