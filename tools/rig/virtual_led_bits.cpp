#include <unistd.h>

#include <array>
#include <fstream>
#include <string>

#include "base/led_bits.h"

/// The lights of a virtual board's keyboards: a node is a FIFO and has none, so their bits stand in
/// a file beside it, "event0.leds". Without it all are off.

std::uint32_t readLedBits(int fd) {
    std::array<char, 4096> path{};
    const std::string link = "/proc/self/fd/" + std::to_string(fd);
    const ssize_t length = readlink(link.c_str(), path.data(), path.size());
    std::uint32_t bits = 0;
    if (length > 0) {
        std::ifstream(std::string(path.data(), static_cast<std::size_t>(length)) + ".leds") >> bits;
    }
    return bits;
}
