#include <linux/input-event-codes.h>

#include "remote/lights.h"
#include "remote/reports.h"
#include "remote/uncalled.h"
#include "unit/remote/between.h"
#include "unit/remote/remote_state.h"

namespace {

class Event : public RemoteState {
 protected:
    Event() { control(box); }
    void send(EventType type, const std::string& ip, const InputRecord* ev = nullptr) {
        EXPECT_EQ(operationEvent(console.motion, type, ip.c_str(), ev, buffer.data()), 1);
    }
    wire::Absolute buffer{};
    Receiver box{"127.0.0.31"};
};

TEST_F(Event, AReportTakesTheFormOfTheBoxAndTheWheelGoesAsItStands) {
    Receiver user{ownAddress(), wire::kUserPort};
    placePointer(9, 8);
    const InputRecord ev{0, 0, EV_REL, REL_WHEEL, -1};
    send(kMouseWheel, box.ip, &ev);
    EXPECT_EQ(box.all(), "");
    change([](BoxInControl& now) { now.rel_enable = true; });
    console.motion.remoteDx = 300;
    console.motion.remoteDy = -2;
    send(kMouseFlush, box.ip);
    EXPECT_EQ(box.all(), "57 ab 04 01 00 09 00 08 00 ff") << "absolute whatever the box takes";
    send(kMouseMove, box.ip, &ev);
    const InputRecord press{0, 0, EV_KEY, BTN_RIGHT, 1};
    send(kMouseClick, box.ip, &press);
    EXPECT_EQ(box.all(), "57 ab 02 00 2c fe ff | 57 ab 02 02 00 00 ff") << "motion is told once";
    const InputRecord contact{0, 0, EV_KEY, BTN_TOUCH, 1};
    send(kMouseButton, box.ip, &contact);
    send(kMouseMove, box.ip);
    EXPECT_EQ(box.all(), "57 ab 02 03 00 00 00") << "a contact is told by the next report";
    change([&](BoxInControl& now) { now.is_user_ip = true, now.curIp.assign(user.ip); });
    console.motion.remoteDx = 9;
    tellPointer(console.motion);
    EXPECT_EQ(console.motion.takeRemote(), std::pair(0, 0)) << "nothing is left for the next box";
    sendReport(BoxReport::keys(wire::keyboard(0x02, 0x04)), console.motion);
    EXPECT_EQ(user.all(), "4b 00 02 07 00 5a 00 90 00 00 00 | 4b 00 01 08 02 00 04 00 00 00 00 00");
    console.motion.remoteDx = 7;
    getInputMouseLocation(console.motion, buffer.data());
    EXPECT_EQ(console.motion.takeRemote(), std::pair(0, 0));
}

TEST_F(Event, NobodyIsSentNothing) {
    Receiver here{"127.0.0.1"};  // a datagram to 0.0.0.0 would arrive at this very machine
    const InputRecord ev{0, 0, EV_KEY, BTN_LEFT, 1};
    for (const char* ip : {"0.0.0.0", ""}) {
        change([&](BoxInControl& now) {
            now.curIp.assign(ip);
            now.port_add = here.port - 80;
        });
        for (const EventType type : {kMouseMove, kMouseClick, kMouseFlush}) {
            send(type, ip, &ev);
        }
        releaseKey();
        releaseInput(ip);
        change([](BoxInControl& now) { now.is_user_ip = true; });
        sendRelease(console.motion);
        change([](BoxInControl& now) { now.is_user_ip = false; });
    }
    EXPECT_EQ(here.all(), "");
}

TEST_F(Event, OnPauseABoxOfTheUserListIsReleasedInTheOtherForm) {
    Receiver user{ownAddress(), wire::kUserPort};
    const std::string userKeysUp = "4b 00 01 08 00 00 00 00 00 00 00 00";
    placePointer(258, 3);
    change([](BoxInControl& now) { now.is_user_ip = true; });
    EXPECT_EQ(sendRelease(console.motion), 0);
    EXPECT_EQ(box.all(), std::string("57 ab 04 01 00 02 01 03 00 00 | ") + kKeysUp);
    change([&](BoxInControl& now) { now.curIp.assign(user.ip); });
    releaseInput(box.ip.c_str());
    EXPECT_EQ(user.all(), userKeysUp);
    change([](BoxInControl& now) { now.is_user_ip = false; });
    sendRelease(console.motion);
    EXPECT_EQ(user.all(), userKeysUp);
    EXPECT_EQ(box.all(), "");
}

TEST_F(Event, LightsAreSentOnlyWithAKeyboard) {
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(syncLed(console.lights, true), 0); }),
              "not get act key or not input ip\n");
    EXPECT_EQ(box.text(), "nothing");
    console.lights.ledKeyFd.set(STDERR_FILENO);
    console.lights.capsLockOn = console.lights.numLockOn = 1;
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(syncLed(console.lights, false), 1); }), "get buff:0x0\n");
    EXPECT_EQ(console.lights.capsLockOn + console.lights.numLockOn, 0);
    EXPECT_EQ(box.text(), "nothing");
    lightsOfKeyboard = 1;
    EXPECT_EQ(printedBy([&] { syncLed(console.lights, true); }), "get buff:0x1\n");
    lightsOfKeyboard = -1;
    EXPECT_EQ(box.text(), "out&capslock=off#numlock=on");
    EXPECT_EQ(console.lights.numLockOn, 1);
}

TEST_F(Event, MirrorDrawsTheCellsOfASplitScreenAtHalfSize) {
    Receiver output{ownAddress(), wire::kMirrorPort};
    vr_mouse = 1;
    buildWall({"0,0," + output.ip + "#0,0,127.0.0.31#2,1,127.0.0.32"}, output.ip);
    placeCell(2, 1);
    placePointer(300, 201);
    send(kMouseMove, box.ip);
    // 300 / 3 + 2 * 960 = 2020, 201 / 2 + 540 = 640.
    EXPECT_EQ(output.all(), "57 ab 04 01 00 e4 07 80 02 00");
}

}  // namespace
