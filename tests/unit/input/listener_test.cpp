#include "input/listener.h"

#include <linux/input-event-codes.h>
#include <sys/ioctl.h>

#include "unit/remote/remote_state.h"

namespace {

/// A listener whose devices are pipes that end behind their records.
struct Listening : RemoteState {
    Listening() {
        buildWall({"0,0,10.0.0.1#0,0," + box.name()}, "10.0.0.1");
        console.duties.hotPlugFlag = 0;
    }
    ~Listening() override {
        for (const InputDeviceList* list : {&devices.keyDevices, &devices.touchDevices}) {
            close(list->fds[0]);
        }
    }

    /// Adds a device that gives `bytes`; returns its descriptor.
    static int add(InputDeviceList& list, const std::string& bytes) {
        int ways[2] = {-1, -1};
        EXPECT_EQ(pipe(ways), 0);
        EXPECT_EQ(write(ways[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
        close(ways[1]);
        list.count = 1;
        return list.fds[0] = ways[0];
    }
    static std::string record(std::uint16_t type, int code = 0, std::int32_t value = 0) {
        const InputRecord one{0, 0, type, static_cast<std::uint16_t>(code), value};
        return {reinterpret_cast<const char*>(&one), sizeof one};
    }
    std::string run() {
        return printedBy([&] { EXPECT_EQ(listenInputFd(devices, console), 0U); });
    }

    Receiver box{"127.0.0.31"};
    DeviceCounts counts;
    Devices devices{counts};
};

TEST_F(Listening, WhatIsDownIsLetGoAtItsEnd) {
    add(devices.keyDevices, record(EV_KEY, KEY_A, 1));
    const std::string lines = run();
    EXPECT_NE(lines.find("======>start listenInput<======\n"), lines.npos);
    EXPECT_TRUE(lines.ends_with("read key error or in osd pause 0 len 0\n")) << lines;
    EXPECT_EQ(devices.listenerAlive, 0);
    EXPECT_EQ(box.all(), std::string("57 ab 01 00 00 04 00 00 00 00 00 | ") + kKeysUp);
}

TEST_F(Listening, EverythingIsReleasedOnceAtTheFirstBox) {
    for (const auto& [option, first] :
         {std::pair{0, ""},
          {1, "57 ab 01 00 00 00 00 00 00 00 00 | 57 ab 04 01 00 00 00 00 00 00"}}) {
        releaseEverything = static_cast<std::uint8_t>(option);
        for (const char* told : {first, ""}) {
            add(devices.keyDevices, "");
            run();
            EXPECT_EQ(box.all(), told);
            close(devices.keyDevices.fds[0]);
        }
    }
    releaseEverything = 0;
}

TEST_F(Listening, APauseEmptiesTheNodes) {
    std::string typed = record(EV_KEY, KEY_LEFTSHIFT, 1) + record(EV_KEY, KEY_A, 1);
    for (int i = 0; i < 1000; ++i) {  // more than one read, less than it takes to look again
        typed += record(EV_SYN);
    }
    const int node = add(devices.keyDevices, typed);
    add(devices.touchDevices, record(EV_SYN));  // its end comes in the pass of the combination
    run();
    int left = -1;
    ioctl(node, FIONREAD, &left);
    EXPECT_EQ(left, 0);
}

}  // namespace
