#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>

#include "app/base/inputevent.h"
#include "app/base/path_prefix.h"
#include "unit/config/scratch.h"

/// A virtual /dev/input for one test. A FIFO that is open for reading and writing echoes what is
/// written to it, as a real device does.
class FifoBoard {
 public:
    FifoBoard() {
        std::filesystem::create_directories(scratch_.path("dev/input"));
        setPathPrefix(scratch_.path());
    }
    ~FifoBoard() { setPathPrefix(""); }
    FifoBoard(const FifoBoard&) = delete;
    FifoBoard& operator=(const FifoBoard&) = delete;

    std::string path(const std::string& node) const { return scratch_.path("dev/input/" + node); }
    bool addFifo(const std::string& node) const { return mkfifo(path(node).c_str(), 0600) == 0; }

 private:
    Scratch scratch_;
};

/// Appends a device as discovery does, without opening it.
inline void list(InputDeviceList& devices, const std::string& node) {
    auto& slot = devices.names[devices.count];
    slot.fill('\0');
    node.copy(slot.data(), slot.size() - 1);
    devices.count = devices.count + 1;
}

/// How many entries a directory such as /proc/self/fd has.
inline long entriesOf(const char* directory) {
    return std::distance(std::filesystem::directory_iterator(directory), {});
}
