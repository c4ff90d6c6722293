#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

/// What an emulated machine wrote to its flash, in the order in which the flash was told, from the
/// file that the emulator keeps (format: the kernel's dm-log-writes). One thread uses it.
class FlashWrites {
 public:
    /// Reads the file. Throws std::runtime_error when it is no such file.
    explicit FlashWrites(const std::string& file);

    std::size_t count() const { return entries_.size(); }
    std::size_t flushes() const;
    /// How many entries the file of a running machine holds by its own account: all of them up to
    /// the last flush that the machine was told is done.
    static std::size_t countIn(const std::string& file);

    /// Writes to `image`, which held what the machine found, what the flash holds when the power
    /// goes after the first `count` entries. What was flushed is there; of what was not, `lost`
    /// decides for each write whether it is (without `lost`: all of it).
    void apply(std::string& image, std::size_t count, std::mt19937* lost = nullptr) const;

 private:
    struct Entry {
        std::uint64_t sector, flags;
        std::size_t at, size;  ///< of its bytes in the file
    };

    std::string bytes_;
    std::uint64_t sectorSize_ = 0;
    std::vector<Entry> entries_;
};
