#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

enum class FileState : std::uint8_t {
    kRead,
    kMissing,     ///< there is no such file
    kNotRegular,  ///< a directory, a FIFO, a device
    kUnreadable,  ///< it cannot be opened, or a read failed
};

struct FileText {
    FileState state = FileState::kMissing;
    std::string text;
};

/// The first `limit` bytes of the regular file at `path`, which is taken as it is (no path prefix).
/// Never waits for a FIFO's writer. Any thread.
FileText readFileStart(const std::string& path, std::size_t limit);
