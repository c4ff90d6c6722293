#include <csignal>

#include "unit/input/listener_world.h"
#include "unit/net/open_socket.h"

namespace {

/// Keyboards and mice on FIFOs, and nodes that do not answer: one that ends at once, one that stays
/// silent, one that does not exist.
struct Devices : testing::Test {
    Devices() {
        std::filesystem::create_symlink("/dev/null", root.node("event8"));
        std::signal(SIGHUP, SIG_IGN);  // the terminal below may become this process's own
        silent = posix_openpt(O_RDWR | O_NOCTTY);
        EXPECT_EQ(grantpt(silent) | unlockpt(silent), 0);
        std::filesystem::create_symlink(ptsname(silent), root.node("event9"));
        list(events.keyDevices, "event9");
        list(events.keyDevices, "event0");
        list(events.mouseDevices, "event8");
        list(events.mouseDevices, "event1");
        list(events.mouseDevices, "event7");
        list(events.touchDevices, "event2");
    }
    ~Devices() override {
        events.closeInputFd(true, true, true);
        close(silent);
    }

    const FifoRoot root{3};
    int silent = -1;
    inputevent_ events;
};

TEST_F(Devices, CloseOnlyTheKindsThatAreAskedFor) {
    events.openInputFd();
    const int key = events.keyDevices.fds[1];
    const int mouse = events.mouseDevices.fds[1];
    events.ledKeyFd.set(key);
    FD_SET(mouse, &events.readSet);
    EXPECT_EQ(events.closeInputFd(true, false, false), 1);
    EXPECT_FALSE(fdIsOpen(mouse) || FD_ISSET(mouse, &events.readSet));
    EXPECT_TRUE(fdIsOpen(key));
    EXPECT_EQ(events.mouseDevices.count + static_cast<unsigned>(events.mouseDevices.fds[1]), 0U);
    EXPECT_EQ(events.ledKeyFd.copy(), key);
    events.closeInputFd(true, true, true);
    EXPECT_FALSE(fdIsOpen(key));
    EXPECT_EQ(events.ledKeyFd.copy(), 0) << "a closed keyboard's lights are nobody's";
}

TEST_F(Devices, TheProbeKeepsThoseThatEchoAndSaysSo) {
    events.touchNamed = 1;
    EXPECT_EQ(
        printedBy([&] { EXPECT_EQ(events.openInputFd(), 1); }),
        "mouseEvent-->3 keyevent-->2 touchevent-->1\n"
        "not open key input event9\nnot open key input event0\nopen  mouse input event8  ok\nopen  mouse input event1  ok\n"
        "not open mouse input event7\n"
        "keyeventfilename1: /dev/input/event2\nopen  touch input event2  ok\n");
    EXPECT_EQ(
        printedBy([&] { EXPECT_EQ(events.check_input_event(), 1); }),
        "check mouse event8 false\ncheck mouse event1 false\n"
        "check mouse event7 false\nclose all mouse input device\nget real mouse event:event1\n"
        "checkt mouse event9 false\ncheckt mouse event0 false\nclose all keyboard input device\n"
        "get real key event:event1\n"  // the mouse of that slot
        "get real mouse event 1, keyboard evnet 1\n"
        "mouseEvent-->1 keyevent-->1 touchevent-->1\n"
        "not open key input event0\nopen  mouse input event1  ok\n"
        "keyeventfilename1: /dev/input/event2\nopen  touch input event2  ok\n");
    EXPECT_STREQ(events.keyDevices.name(0), "event0");
    EXPECT_TRUE(fdIsOpen(events.keyDevices.fds[0]));
    pollfd wait{events.keyDevices.fds[0], POLLIN, 0};
    EXPECT_EQ(poll(&wait, 1, 0), 0) << "the echo was drained";
}

}  // namespace
