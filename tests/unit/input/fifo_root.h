#pragma once

#include "input/devices.h"
#include "unit/fixture.h"

/// Appends a device as discovery does, without opening it.
inline void list(InputDeviceList& devices, const std::string& node) {
    auto& slot = devices.names[devices.count];
    slot.fill('\0');
    node.copy(slot.data(), slot.size() - 1);
    devices.count = devices.count + 1;
}

/// A virtual /dev/input. A FIFO that is open for reading and writing echoes what is written to it,
/// as a real device does.
struct FifoRoot : Root {
    explicit FifoRoot(int nodes) {
        std::filesystem::create_directories(path("dev/input"));
        for (int n = 0; n < nodes; ++n) {
            EXPECT_EQ(mkfifo(node("event" + std::to_string(n)).c_str(), 0600), 0);
        }
    }
    std::string node(const std::string& name) const { return path("dev/input/" + name); }
};
