#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

/// Steps of writing a file so that a power cut loses none of it. Any thread.

/// What is between a file's name and the six characters that tell its temporary files apart.
inline constexpr std::string_view kTemporary = ".tmp-XXXXXX";

struct FileKind {
    bool regular = false;
    mode_t permissions = 0;
    uid_t owner = 0;
    gid_t group = 0;
};

/// Nothing when there is no such file.
std::optional<FileKind> kindOf(const std::string& path);

/// The result of a call that a file system may not know or not allow: that is no failure. Looks at
/// errno.
bool doneOrNotKnown(int result);

/// False when not all of it could be written; errno tells why.
bool writeAll(int fd, std::string_view text);

/// Makes sure that the names in it are on the disk.
void syncDirectory(const std::string& directory);

/// A text on the disk that has not its name yet.
struct Temporary {
    std::string name;       ///< empty when there is none
    bool complete = false;  ///< all of it is there
    int error = 0;          ///< errno of what failed
};

/// Writes `text` beside `target`, with owner and permissions of `like`.
Temporary writeTemporary(const std::string& target, const std::string& text,
                         const std::optional<FileKind>& like);
