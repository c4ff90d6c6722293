#pragma once

#include <poll.h>

#include "input/key_press.h"
#include "input/listener.h"
#include "unit/remote/board.h"

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

/// A listener whose devices are pipes, with one box.
struct ListenerWorld : Board {
    ListenerWorld() {
        control(box);
        curOutIp.set(AddressText{ownAddress()});
        KvmSetSocket = &toBoxes;
        alt_3_flag = 1;
        events.hotPlugFlag = 0;
        state.firstKey = false;  // the lights are no matter of these tests
    }
    ~ListenerWorld() override {
        for (const int fd : opened_) {
            close(fd);
        }
    }

    /// Adds a device; returns the end of its pipe that events are written to.
    int add(InputDeviceList& devices) {
        int ends[2] = {-1, -1};
        EXPECT_EQ(pipe(ends), 0);
        opened_.insert(opened_.end(), ends, ends + 2);
        devices.fds[devices.count] = ends[0];
        devices.count = devices.count + 1;
        return ends[1];
    }

    /// Writes one event to the first device and lets `pass` serve it; false when the listener ends.
    bool give(InputDeviceList& devices, bool (*pass)(ListenerState&), const InputRecord& record) {
        end_ = devices.count == 0 ? add(devices) : end_;
        EXPECT_EQ(write(end_, &record, sizeof record), kRecordSize);
        FD_ZERO(&state.ready);
        FD_SET(devices.fds[0], &state.ready);
        return pass(state);
    }

    Box box{"127.0.0.31"};
    ListenerState state{events};

 private:
    std::vector<int> opened_;
    int end_ = -1;
};
