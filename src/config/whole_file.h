#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>

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
    /// only flushed once when somebody else wrote it. The permission bits of an existing file stay,
    /// a new one gets 0644. Returns false when the file cannot be written; the old text is kept
    /// then. Any thread.
    bool replace(const std::string& text, std::uint64_t order);

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
        std::string text;  ///< on the disk; empty when its save failed on the way
    };

    bool holdsAlready(const std::string& target, const std::string& text, std::uint64_t order);
    Renamed renameOver(const std::string& temporary, const std::string& target,
                       const std::string& text, std::uint64_t order);
    bool writeInPlace(const std::string& target, const std::string& text, std::uint64_t order);

    void noteWrite();

    const std::string path_;
    Guarded<std::deque<std::chrono::steady_clock::time_point>> writes_;  ///< the last few
    Shared<std::uint8_t> busy_{0};
    Guarded<Saved> newest_;  ///< held for comparisons and one rename
    std::mutex inPlace_;     ///< held for a whole write, only where renaming is refused
};
