#include "base/led_bits.h"

#include <linux/input.h>
#include <sys/ioctl.h>

#include <array>

std::uint32_t readLedBits(int fd) {
    std::array<unsigned char, 31> bits{};
    if (ioctl(fd, EVIOCGLED(bits.size()), bits.data()) < 0) {
        return 0;
    }
    return bits[0] | static_cast<std::uint32_t>(bits[1]) << 8;
}
