#pragma once

#include <array>
#include <cstdarg>
#include <cstddef>

/// Lines that are printed a little later: what they say is kept as it stands, so that between a
/// record and its datagram nothing is formatted. They come in the order in which they were added.
/// One thread.
class LaterLines {
 public:
    /// Keeps a line in printf's form: conversions d, i, u, x, c and s, with flags and width, the
    /// lengths l and z. A text is kept as it is now, at most kLongestText of its characters. When
    /// there is no room the lines before it are printed first.
    void add(const char* format, va_list arguments);

    /// Prints what was added since the last time.
    void print();

 private:
    static constexpr std::size_t kRoom = 4096;
    static constexpr std::size_t kLongestText = 255;
    /// What one line may need: its format, twelve numbers or texts.
    static constexpr std::size_t kMostForOne = 12 * (kLongestText + 1);

    void put(const void* bytes, std::size_t size);

    std::array<char, kRoom> kept_;
    std::size_t size_ = 0;
};
