#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>

#include "unit/input/fifo_board.h"
#include "unit/net/open_socket.h"

namespace {

/// Keyboards and mice on FIFOs, and nodes that do not answer: one that ends at once, one that stays
/// silent, one that does not exist.
struct Devices : testing::Test {
    Devices() {
        for (const char* node : {"event0", "event1", "event2"}) {
            EXPECT_TRUE(board.addFifo(node));
        }
        std::filesystem::create_symlink("/dev/null", board.path("event8"));
        std::signal(SIGHUP, SIG_IGN);  // the terminal below may become this process's own
        silent = posix_openpt(O_RDWR | O_NOCTTY);
        EXPECT_EQ(grantpt(silent) | unlockpt(silent), 0);
        std::filesystem::create_symlink(ptsname(silent), board.path("event9"));
    }
    ~Devices() override {
        printedBy([&] { events.closeInputFd(true, true, true); });
        close(silent);
    }

    void listAll() {
        list(events.keyDevices, "event9");
        list(events.keyDevices, "event0");
        list(events.mouseDevices, "event8");
        list(events.mouseDevices, "event1");
        list(events.mouseDevices, "event7");
        list(events.touchDevices, "event2");
    }

    FifoBoard board;
    int silent = -1;
    inputevent_ events;
};

TEST_F(Devices, CloseOnlyTheKindsThatAreAskedFor) {
    listAll();
    printedBy([&] { events.openInputFd(); });
    const int key = events.keyDevices.fds[1];
    const int mouse = events.mouseDevices.fds[1];
    events.ledKeyFd.set(key);
    FD_SET(mouse, &events.readSet);

    EXPECT_EQ(printedBy([&] { EXPECT_EQ(events.closeInputFd(true, false, false), 1); }),
              "close all mouse input device\n");
    EXPECT_FALSE(fdIsOpen(mouse));
    EXPECT_FALSE(FD_ISSET(mouse, &events.readSet));
    EXPECT_TRUE(fdIsOpen(key));
    EXPECT_EQ(events.mouseDevices.count, 0U);
    EXPECT_EQ(events.mouseDevices.fds[1], 0);
    EXPECT_STREQ(events.mouseDevices.name(1), "");
    EXPECT_EQ(events.ledKeyFd.copy(), key);

    EXPECT_EQ(printedBy([&] { events.closeInputFd(true, true, true); }),
              "close all keyboard input device\nclose all mouse input device\n"
              "close all touch input device\n");
    EXPECT_FALSE(fdIsOpen(key));
    EXPECT_EQ(events.ledKeyFd.copy(), 0) << "a closed keyboard's lights are nobody's";
}

TEST_F(Devices, TheProbeKeepsThoseThatEchoAndSaysSo) {
    listAll();
    events.touchNamed = 1;
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(events.openInputFd(), 1); }),
              "mouseEvent-->3 keyevent-->2 touchevent-->1\n"
              "not open key input event9\n"
              "not open key input event0\n"
              "open  mouse input event8  ok\n"
              "open  mouse input event1  ok\n"
              "not open mouse input event7\n"
              "keyeventfilename1: /dev/input/event2\n"
              "open  touch input event2  ok\n");
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(events.check_input_event(), 1); }),
              "check mouse event8 false\n"
              "check mouse event1 false\n"
              "check mouse event7 false\n"
              "close all mouse input device\n"
              "get real mouse event:event1\n"
              "checkt mouse event9 false\n"
              "checkt mouse event0 false\n"
              "close all keyboard input device\n"
              "get real key event:event1\n"  // the mouse of that slot
              "get real mouse event 1, keyboard evnet 1\n"
              "mouseEvent-->1 keyevent-->1 touchevent-->1\n"
              "not open key input event0\n"
              "open  mouse input event1  ok\n"
              "keyeventfilename1: /dev/input/event2\n"
              "open  touch input event2  ok\n");
    EXPECT_STREQ(events.keyDevices.name(0), "event0");
    EXPECT_TRUE(fdIsOpen(events.keyDevices.fds[0]));
    InputRecord record;
    fcntl(events.keyDevices.fds[0], F_SETFL, O_NONBLOCK);
    EXPECT_EQ(readRecord(events.keyDevices.node(0), record), -1) << "the echo was drained";
}

TEST_F(Devices, RoundAfterRoundNoDescriptorIsLeftBehind) {
    const long before = entriesOf("/proc/self/fd");
    for (int round = 0; round < 30; ++round) {
        printedBy([&] {
            list(events.keyDevices, "event8");  // answers "no" at once
            list(events.mouseDevices, "event8");
            list(events.touchDevices, "event2");
            events.openInputFd();
            events.check_input_event();
            events.closeInputFd(true, true, true);
        });
    }
    EXPECT_EQ(entriesOf("/proc/self/fd"), before);
}

}  // namespace
