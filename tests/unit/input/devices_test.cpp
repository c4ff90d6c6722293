#include <poll.h>

#include <csignal>

#include "input/probe.h"
#include "unit/input/fifo_root.h"
#include "unit/net/open_socket.h"

namespace {

/// Keyboards and mice on FIFOs, and nodes that do not answer: one that ends at once, one that stays
/// silent, one that does not exist.
struct Nodes : testing::Test {
    Nodes() {
        std::filesystem::create_symlink("/dev/null", root.node("event8"));
        std::signal(SIGHUP, SIG_IGN);  // the terminal below may become this process's own
        silent = posix_openpt(O_RDWR | O_NOCTTY);
        EXPECT_EQ(grantpt(silent) | unlockpt(silent), 0);
        std::filesystem::create_symlink(ptsname(silent), root.node("event9"));
        list(devices.keyDevices, "event9");
        list(devices.keyDevices, "event0");
        list(devices.mouseDevices, "event8");
        list(devices.mouseDevices, "event1");
        list(devices.mouseDevices, "event7");
        list(devices.touchDevices, "event2");
    }
    ~Nodes() override {
        closeInputFd(devices, lights, true, true, true);
        close(silent);
    }

    const FifoRoot root{3};
    int silent = -1;
    DeviceCounts counts;
    Devices devices{counts};
    Lights lights;
};

TEST_F(Nodes, CloseOnlyTheKindsThatAreAskedFor) {
    openInputFd(devices);
    const int key = devices.keyDevices.fds[1];
    const int mouse = devices.mouseDevices.fds[1];
    lights.ledKeyFd.set(key);
    FD_SET(mouse, &devices.readSet);
    EXPECT_EQ(closeInputFd(devices, lights, true, false, false), 1);
    EXPECT_FALSE(fdIsOpen(mouse) || FD_ISSET(mouse, &devices.readSet));
    EXPECT_TRUE(fdIsOpen(key));
    EXPECT_EQ(devices.mouseDevices.count, 0U);
    EXPECT_EQ(devices.mouseDevices.fds[1], -1);
    EXPECT_EQ(lights.ledKeyFd.copy(), key);
    closeInputFd(devices, lights, true, true, true);
    EXPECT_FALSE(fdIsOpen(key));
    EXPECT_EQ(lights.ledKeyFd.copy(), -1) << "a closed keyboard's lights are nobody's";
}

TEST_F(Nodes, TheProbeKeepsThoseThatEchoAndSaysSo) {
    devices.panel.touchNamed = 1;
    EXPECT_EQ(
        printedBy([&] { EXPECT_EQ(openInputFd(devices), 1); }),
        "mouseEvent-->3 keyevent-->2 touchevent-->1\n"
        "not open key input event9\nnot open key input event0\nopen  mouse input event8  ok\nopen  mouse input event1  ok\n"
        "not open mouse input event7\n"
        "keyeventfilename1: /dev/input/event2\nopen  touch input event2  ok\n");
    EXPECT_EQ(
        printedBy([&] { EXPECT_EQ(check_input_event(devices, lights), 1); }),
        "check mouse event8 false\ncheck mouse event1 false\n"
        "check mouse event7 false\nclose all mouse input device\nget real mouse event:event1\n"
        "checkt mouse event9 false\ncheckt mouse event0 false\nclose all keyboard input device\n"
        "get real key event:event1\n"  // the mouse of that slot
        "get real mouse event 1, keyboard evnet 1\n"
        "mouseEvent-->1 keyevent-->1 touchevent-->1\n"
        "not open key input event0\nopen  mouse input event1  ok\n"
        "keyeventfilename1: /dev/input/event2\nopen  touch input event2  ok\n");
    EXPECT_STREQ(devices.keyDevices.name(0), "event0");
    EXPECT_TRUE(fdIsOpen(devices.keyDevices.fds[0]));
    pollfd wait{devices.keyDevices.fds[0], POLLIN, 0};
    EXPECT_EQ(poll(&wait, 1, 0), 0) << "the echo was drained";
}

}  // namespace
