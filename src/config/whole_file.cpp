// Files above 2 GiB can be replaced on a 32-bit board too.
#ifndef _FILE_OFFSET_BITS
#define _FILE_OFFSET_BITS 64  // NOLINT(bugprone-reserved-identifier)
#endif

#include "config/whole_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "base/descriptor.h"
#include "base/file_start.h"
#include "config/safe_write.h"

namespace {

struct Free {
    void operator()(char* text) const { std::free(text); }
    void operator()(DIR* directory) const { closedir(directory); }
};

/// The file that `path` leads to; of a link whose file is not there yet, the file that it names.
std::string resolved(const std::string& path) {
    const std::unique_ptr<char, Free> real(realpath(path.c_str(), nullptr));
    if (real) {
        return real.get();
    }
    std::error_code none;
    const std::filesystem::path named = std::filesystem::read_symlink(path, none);
    return none ? path : (std::filesystem::path(path).parent_path() / named).string();
}

std::string directoryOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

std::string_view nameOf(std::string_view path) { return path.substr(path.rfind('/') + 1); }

/// True when the six characters are of those that mkostemp puts in the place of its X.
bool isOfOurNaming(std::string_view ending) {
    return ending.size() == 6 && std::all_of(ending.begin(), ending.end(),
                                             [](unsigned char c) { return std::isalnum(c) != 0; });
}

/// True when the failure lies with the directory and not with the disk: writing in place can help,
/// where on a full disk it would lose the old text.
bool directoryRefuses(int error) {
    return error == EACCES || error == EPERM || error == EROFS || error == EBUSY || error == EXDEV;
}

/// Reserves the room for a text that is written over the old one; a file system that cannot
/// reserve is believed to have it.
bool hasRoomFor(int fd, std::size_t size) {
    return size == 0 || fallocate(fd, FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(size)) == 0 ||
           errno == EOPNOTSUPP || errno == ENOSYS;
}

}  // namespace

bool WholeFile::replace(const std::string& text, std::uint64_t order) {
    const std::string target = resolved(path_);
    const auto existing = kindOf(target);
    if (existing && !existing->regular) {
        return fail(EISDIR);
    }
    if (existing && faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0) {
        return fail(errno);
    }
    if (isLeftAlone(target, text, order)) {
        return true;
    }
    Temporary temporary = writeTemporary(target, text, existing);
    if (temporary.name.empty()) {
        return directoryRefuses(temporary.error) ? writeInPlace(target, text, order)
                                                 : fail(temporary.error);
    }
    Renamed renamed = Renamed::kFailed;
    if (temporary.complete) {
        renamed = renameOver(temporary.name, target, text, order);
        temporary.error = errno;
    }
    if (renamed != Renamed::kDone) {
        unlink(temporary.name.c_str());
    }
    if (renamed == Renamed::kDirectoryRefuses) {
        return writeInPlace(target, text, order);
    }
    syncDirectory(directoryOf(target));
    if (renamed == Renamed::kDone) {
        noteWrite();
    }
    return renamed != Renamed::kFailed || fail(temporary.error);
}

void WholeFile::noteWrite() {
    constexpr std::size_t kMany = 10;
    const auto now = std::chrono::steady_clock::now();
    writes_.with([&](auto& writes) {
        writes.push_back(now);
        if (writes.size() > kMany) {
            if (now - writes.front() < std::chrono::seconds(10)) {
                busy_ = 1;
                writes.clear();  // told once for as many
            } else {
                writes.pop_front();
            }
        }
    });
}

bool WholeFile::setAside(const std::string& kept) const {
    return std::rename(resolved(path_).c_str(), kept.c_str()) == 0;
}

void WholeFile::isRead(const std::string& text) {
    newest_.with([&text](Saved& newest) { newest.text = newest.order == 0 ? text : newest.text; });
}

std::optional<std::string_view> WholeFile::keep(const std::string& text) {
    constexpr std::array<const char*, 3> kEndings{".before", ".before.1", ".before.2"};
    for (const char* const ending : kEndings) {
        const FileText kept = readFileStart(path_ + ending, text.size() + 1);
        if (kept.state == FileState::kRead && kept.text == text) {
            return ending;
        }
    }
    const Temporary temporary = writeTemporary(path_, text, kindOf(path_));
    bool kept = temporary.complete;
    for (std::size_t i = kEndings.size() - 1; kept && i > 0; --i) {
        kept = std::rename((path_ + kEndings[i - 1]).c_str(), (path_ + kEndings[i]).c_str()) == 0 ||
               errno == ENOENT;
    }
    kept = kept && std::rename(temporary.name.c_str(), (path_ + kEndings[0]).c_str()) == 0;
    if (!kept && !temporary.name.empty()) {
        unlink(temporary.name.c_str());
    }
    syncDirectory(directoryOf(path_));
    return kept ? std::optional<std::string_view>(kEndings[0]) : std::nullopt;
}

WholeFile::Edited WholeFile::takeEdited() {
    return edited_.with([](Edited& edited) { return std::exchange(edited, {}); });
}

/// The file itself is read: an edit within the grain of the time stamps would not be seen in them.
FileText WholeFile::read(const std::string& target, const std::string& text, Last& last) {
    constexpr std::size_t kLargest = std::size_t{1} << 25;
    const auto newestOrder = [this] {
        return newest_.with([](const Saved& newest) { return newest.order; });
    };
    FileText file;
    std::uint64_t before = 0;
    do {
        before = newestOrder();
        file = readFileStart(target, kLargest);
        newest_.with([&](const Saved& newest) {
            last = {!newest.text.empty(), file.text == newest.text, text == newest.text,
                    newest.isFlushed};
        });
    } while (newestOrder() != before);
    return file;
}

bool WholeFile::isLeftAlone(const std::string& target, const std::string& text,
                            std::uint64_t order) {
    Last last;
    const FileText file = read(target, text, last);
    if (file.state != FileState::kRead) {
        return false;
    }
    if (file.text != text) {
        const bool isEdited = last.isKnown && !last.isInTheFile && !file.text.empty();
        if (isEdited && !last.isTheText) {
            edited_.set({true, keep(file.text)});
        }
        return isEdited && last.isTheText;
    }
    if (!last.isTheText || !last.isFlushed) {
        const Descriptor fd(open(target.c_str(), O_RDONLY | O_CLOEXEC));
        if (fd < 0 || !doneOrNotKnown(fsync(fd))) {
            return false;  // somebody else's text may not be on the disk yet
        }
    }
    newest_.with([&](Saved& newest) {
        if (order > newest.order) {
            newest = {order, text, true};
        }
    });
    return true;
}

WholeFile::Renamed WholeFile::renameOver(const std::string& temporary, const std::string& target,
                                         const std::string& text, std::uint64_t order) {
    return newest_.with([&](Saved& newest) {
        if (order < newest.order) {
            return Renamed::kOlder;
        }
        if (std::rename(temporary.c_str(), target.c_str()) != 0) {
            return directoryRefuses(errno) ? Renamed::kDirectoryRefuses : Renamed::kFailed;
        }
        newest = {order, text, true};
        return Renamed::kDone;
    });
}

bool WholeFile::writeInPlace(const std::string& target, const std::string& text,
                             std::uint64_t order) {
    const std::lock_guard hold(inPlace_);
    if (order < newest_.with([](const Saved& newest) { return newest.order; })) {
        return true;
    }
    Descriptor fd(open(target.c_str(), O_WRONLY | O_CLOEXEC));
    struct stat old {};
    if (fd < 0 || fstat(fd, &old) != 0 || !hasRoomFor(fd, text.size())) {
        return fail(errno);
    }
    newest_.set({order, {}, false});
    // Whatever stood behind the new text, within reason, is empty lines until it is cut off.
    constexpr off_t kMostLines = off_t{1} << 20;
    std::string whole = text;
    whole.resize(std::max(text.size(), static_cast<std::size_t>(std::min(old.st_size, kMostLines))),
                 '\n');
    const bool written = writeAll(fd, whole) && doneOrNotKnown(fsync(fd)) &&
                         ftruncate(fd, static_cast<off_t>(text.size())) == 0 &&
                         doneOrNotKnown(fsync(fd));
    const int error = errno;
    const bool complete = fd.close() && written;
    noteWrite();
    newest_.with([&](Saved& newest) {
        if (complete && newest.order == order) {
            newest = {order, text, true};
        }
    });
    return complete || fail(error);
}

void WholeFile::removeLeftovers() const {
    constexpr std::time_t kSecondsOfASave = 60;  // a younger file may belong to a save in progress
    const std::string target = resolved(path_);
    const std::string directory = directoryOf(target);
    const std::string name = std::string(nameOf(target)) + std::string(kTemporary);
    const std::string_view start = std::string_view(name).substr(0, name.size() - 6);
    const std::unique_ptr<DIR, Free> entries(opendir(directory.c_str()));
    while (const dirent* entry = entries ? readdir(entries.get()) : nullptr) {
        const std::string_view found = entry->d_name;
        struct stat info {};
        if (found.size() == name.size() && found.starts_with(start) &&
            isOfOurNaming(found.substr(start.size())) &&
            fstatat(dirfd(entries.get()), entry->d_name, &info, AT_SYMLINK_NOFOLLOW) == 0 &&
            S_ISREG(info.st_mode) &&
            std::abs(std::time(nullptr) - info.st_mtime) > kSecondsOfASave) {
            unlinkat(dirfd(entries.get()), entry->d_name, 0);
        }
    }
}
