#pragma once

#include <cstdint>

#include "base/shared.h"

/// How many devices of each kind are open: written with the lists, told in the status answer. Any
/// thread.
struct DeviceCounts {
    Shared<std::uint32_t> mice{0};
    Shared<std::uint32_t> keyboards{0};
    Shared<std::uint32_t> panels{0};
};
