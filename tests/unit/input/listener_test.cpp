#include "input/listener.h"

#include <linux/input-event-codes.h>
#include <poll.h>
#include <sys/ioctl.h>

#include "control/hotkey_table.h"
#include "unit/remote/remote_state.h"

namespace {

/// A listener whose devices are pipes, each with its records and perhaps its end in it.
struct Listening : RemoteState {
    Listening() {
        buildWall({"0,0,10.0.0.1#0,0," + box.name()}, "10.0.0.1");
        console.duties.hotPlugFlag = 0;
    }
    ~Listening() override { closeAll(); }

    void closeAll() {
        for (const int fd : fds_) {
            close(fd);
        }
        fds_.clear();
        counts.keyboards = counts.mice = counts.panels = 0;
    }
    /// Adds a device that gives `bytes`; returns its descriptor.
    int add(InputDeviceList& list, const std::string& bytes, bool ends) {
        int ways[2] = {-1, -1};
        EXPECT_EQ(pipe(ways), 0);
        EXPECT_EQ(write(ways[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
        fds_.push_back(ways[0]);
        if (ends) {
            close(ways[1]);
        } else {
            fds_.push_back(ways[1]);
        }
        list.fds[list.count] = ways[0];
        list.count = list.count + 1;
        return ways[0];
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

 private:
    std::vector<int> fds_;
};

TEST_F(Listening, TheLookUpsIndexGoesOnAsTheKeyboards) {
    struct Row {
        const char* hotkeys;
        int presser;
        const char* left;  ///< which keyboards still have their second record after two passes
    };
    for (const Row& row : {Row{"", 0, ""},                        // no match in 0: slot 1
                           Row{"LEFTCTRL+A", 0, ""},              // match at 0: slot 1
                           Row{"LEFTCTRL+B#LEFTCTRL+A", 0, "1"},  // match at 1: slot 2
                           Row{"LEFTCTRL+B#LEFTALT+A", 0, "12"},  // no match in 2: slot 3
                           Row{"LEFTCTRL+A", 2, ""}}) {           // back to 1, now empty
        hotkeyinfo_.set(parseHotkeys(row.hotkeys, false).table);
        for (int i = 0; i < 3; ++i) {
            add(devices.keyDevices,
                i == row.presser ? record(EV_KEY, KEY_LEFTCTRL, 1) + record(EV_KEY, KEY_A, 1)
                                 : record(EV_SYN) + record(EV_SYN),
                false);
        }
        add(devices.touchDevices, record(EV_SYN), true);  // ends the second pass
        run();
        std::string left;
        for (std::size_t i = 0; i < 3; ++i) {
            pollfd wait{devices.keyDevices.fds[i], POLLIN, 0};
            left += poll(&wait, 1, 0) == 1 ? std::to_string(i) : "";
        }
        EXPECT_EQ(left, row.left) << row.hotkeys;
        closeAll();
    }
    hotkeyinfo_.set({});
}

TEST_F(Listening, AFailedReadEndsItButNotAShortOneWhileTheOsdIsOpen) {
    const std::string whole = record(EV_SYN) + record(EV_SYN);
    const struct {
        InputDeviceList& list;
        std::string bytes;
        bool osd, paused;
        const char* line;
        int left;
    } rows[] = {
        {devices.mouseDevices, "12345", false, false, "read mouse input error--->0 len 5\n", 0},
        {devices.mouseDevices, "12345", true, false, "read mouse input error--->0 len 0\n", 0},
        {devices.mouseDevices, whole, false, true, "read mouse input error--->0 len 0\n", 0},
        {devices.keyDevices, "12345", true, false, "read key error or in osd pause 0 len 5\n", 0},
        {devices.touchDevices, "12345", true, true, "read touch error\n", 0},
        {devices.touchDevices, whole, false, true, "read touch error\n", kRecordSize},
        {devices.touchDevices, whole, true, true, "read touch error\n", 0},
    };
    for (const auto& row : rows) {
        console.modes.osdFlag = row.osd;
        console.modes.touchPaused = row.paused;
        const int fd = add(row.list, row.bytes, true);
        const std::string lines = run();
        EXPECT_TRUE(lines.ends_with(row.line)) << lines;
        int left = -1;
        ioctl(fd, FIONREAD, &left);
        EXPECT_EQ(left, row.left) << "row " << &row - rows;
        EXPECT_EQ(devices.listenerAlive, 0);
        closeAll();
    }
}

TEST_F(Listening, WhatIsDownIsLetGoAtItsEnd) {
    add(devices.keyDevices, record(EV_KEY, KEY_A, 1), true);
    const std::string lines = run();
    EXPECT_NE(lines.find("======>start listenInput<======\n"), lines.npos);
    EXPECT_EQ(box.all(), std::string("57 ab 01 00 00 04 00 00 00 00 00 | ") + kKeysUp);
}

}  // namespace
