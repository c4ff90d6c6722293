#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "base/file_start.h"
#include "base/guarded.h"
#include "base/shared.h"

/// A file that is replaced whole: a power cut leaves the old or the new text. Only where the
/// directory refuses a second file is it written in place: a full disk leaves the old text then,
/// but a power cut in the midst of it may not.
class WholeFile {
 public:
    explicit WholeFile(std::string path) : path_(std::move(path)) {}

    /// Replaces the file's text. `order` is higher for a newer text: one older than what the file
    /// already has is dropped, which counts as success. A file that holds `text` is not written,
    /// only flushed once when somebody else wrote it. One that somebody edited since it was read or
    /// written is left as it is when `text` is the one of then, and else kept first. Owner and
    /// permission bits of an existing file stay, a new one gets 0644. Returns false when the file
    /// cannot be written; the old text is kept then. Any thread.
    bool replace(const std::string& text, std::uint64_t order);

    /// Tells that `text` was read from the file. Before the first replace.
    void isRead(const std::string& text);

    /// Keeps `text`, which stood in the file, beside it as ".before", with the file's owner and
    /// permissions. What was kept there is ".before.1" and ".before.2" then; a text that is kept
    /// already is not kept again. Returns the ending of its name, nothing when it cannot be kept.
    /// Any thread.
    std::optional<std::string_view> keep(const std::string& text);

    /// Somebody else's text in whose place a newer one was written.
    struct Edited {
        bool was = false;
        std::optional<std::string_view> kept;  ///< as keep
    };
    /// What happened since it was last asked. Any thread.
    Edited takeEdited();

    /// The errno of the last replace that failed. Any thread.
    int error() const { return error_; }

    /// True once when the file was written more than 10 times within 10 s. Any thread.
    bool takeBusy() { return busy_.exchange(0) != 0; }

    /// Moves the file, not a link that leads to it, to `kept`. Returns false when it cannot. Any
    /// thread.
    bool setAside(const std::string& kept) const;

    /// Removes the temporary files that a power cut may have left beside the file. Any thread.
    void removeLeftovers() const;

 private:
    enum class Renamed : std::uint8_t { kDone, kOlder, kDirectoryRefuses, kFailed };

    struct Saved {
        std::uint64_t order = 0;
        std::string text;        ///< as read or written last; empty before, and when that failed
        bool isFlushed = false;  ///< it is sure to be on the disk
    };

    /// How the file and a text stand to what was read or written last.
    struct Last {
        bool isKnown = false, isInTheFile = false, isTheText = false, isFlushed = false;
    };
    FileText read(const std::string& target, const std::string& text, Last& last);
    bool isLeftAlone(const std::string& target, const std::string& text, std::uint64_t order);
    Renamed renameOver(const std::string& temporary, const std::string& target,
                       const std::string& text, std::uint64_t order);
    bool writeInPlace(const std::string& target, const std::string& text, std::uint64_t order);

    void noteWrite();
    bool fail(int error) {
        error_ = error;
        return false;
    }

    const std::string path_;
    Guarded<std::deque<std::chrono::steady_clock::time_point>> writes_;  ///< the last few
    Shared<std::uint8_t> busy_{0};
    Shared<int> error_{0};
    Guarded<Edited> edited_;
    Guarded<Saved> newest_;  ///< held for comparisons and one rename
    std::mutex inPlace_;     ///< held for a whole write, only where renaming is refused
};
