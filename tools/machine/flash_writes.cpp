#include "machine/flash_writes.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace {

// Linux: drivers/md/dm-log-writes.c. A superblock in the first sector; each entry begins a sector,
// its bytes follow in the next ones.
constexpr std::uint64_t kMagic = 0x6a736677736872;
constexpr std::uint64_t kFlush = 1, kForced = 2, kDiscard = 4;
constexpr std::size_t kCountAt = 16, kSectorSizeAt = 24, kHead = 28;

template <class Number>
Number numberAt(const std::string& bytes, std::size_t at) {
    Number number = 0;
    std::memcpy(&number, bytes.data() + at, sizeof number);  // little-endian, as this machine
    return number;
}

std::string readFirst(const std::string& file, std::size_t most) {
    std::ifstream in(file, std::ios::binary);
    std::string bytes(most, '\0');
    in.read(bytes.data(), static_cast<std::streamsize>(most));
    bytes.resize(static_cast<std::size_t>(in.gcount()));
    if (bytes.size() < kHead || numberAt<std::uint64_t>(bytes, 0) != kMagic) {
        throw std::runtime_error(file + " is no log of writes");
    }
    return bytes;
}

}  // namespace

FlashWrites::FlashWrites(const std::string& file)
    : bytes_(readFirst(file, std::filesystem::file_size(file))),
      sectorSize_(numberAt<std::uint32_t>(bytes_, kSectorSizeAt)) {
    std::size_t at = sectorSize_;
    for (auto left = numberAt<std::uint64_t>(bytes_, kCountAt); left > 0; --left) {
        Entry entry{};
        entry.sector = numberAt<std::uint64_t>(bytes_, at);
        entry.flags = numberAt<std::uint64_t>(bytes_, at + 16);
        entry.at = at + sectorSize_;
        const bool hasBytes = (entry.flags & kDiscard) == 0;
        entry.size = hasBytes ? numberAt<std::uint64_t>(bytes_, at + 8) * sectorSize_ : 0;
        at = entry.at + entry.size;
        if (at + sectorSize_ > bytes_.size()) {
            break;
        }
        entries_.push_back(entry);
    }
}

std::size_t FlashWrites::countIn(const std::string& file) {
    return numberAt<std::uint64_t>(readFirst(file, kHead), kCountAt);
}

std::size_t FlashWrites::flushes() const {
    return static_cast<std::size_t>(std::ranges::count_if(
        entries_, [](const Entry& entry) { return (entry.flags & kFlush) != 0; }));
}

void FlashWrites::apply(std::string& image, std::size_t count, std::mt19937* lost) const {
    std::size_t safe = count;
    while (safe > 0 && (entries_[safe - 1].flags & kFlush) == 0) {
        --safe;
    }
    for (std::size_t i = 0; i < count; ++i) {
        const Entry& entry = entries_[i];
        const bool isSafe = i < safe || (entry.flags & kForced) != 0;
        const std::size_t to = entry.sector * sectorSize_;
        if (to + entry.size <= image.size() && (isSafe || lost == nullptr || (*lost)() % 2 == 0)) {
            image.replace(to, entry.size, bytes_, entry.at, entry.size);
        }
    }
}
