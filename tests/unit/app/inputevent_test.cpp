#include "app/inputevent.h"

#include <linux/input-event-codes.h>

#include "config/software_config.h"
#include "unit/remote/remote_state.h"

namespace {

/// The operations that the program itself does not take: each is entered once.
struct Doors : RemoteState {
    Doors() { buildWall({"0,0,10.0.0.1#0,0," + box.name()}, "10.0.0.1"); }
    Receiver box{"127.0.0.31"};
    inputevent_ events;
    std::array<char, 12> report{};
};

TEST_F(Doors, LeadToTheRooms) {
    EXPECT_EQ(events.openInputFd() + events.check_input_event(), 2);
    EXPECT_EQ(events.closeInputFd(true, true, true), 1);
    int ended[2] = {-1, -1};
    EXPECT_EQ(pipe(ended) + close(ended[1]), 0);
    events.devices.mouseDevices.fds[0] = ended[0];
    events.devices.mouseDevices.count = 1;
    EXPECT_EQ(events.listenInputFd(), 0U);
    close(ended[0]);
    std::array<char, 30> name{};
    EXPECT_EQ(events.OnKeyDown(KEY_A, report.data(), 0, 0, 0, name.data()), 11);
    EXPECT_STREQ(name.data(), "A");
    std::array<char, 64> text{};
    EXPECT_EQ(events.GetChar(report.data(), text.data()), 1);
    EXPECT_STREQ(text.data(), "A");
    box.all();
    events.user_send_mk(kKeyboard, nullptr, report.data());
    EXPECT_EQ(events.OnKeyUp(KEY_A, report.data(), 0), 11);
    EXPECT_EQ(report[5], 0);

    std::array<char, AddressText::kSize> ip{};
    EXPECT_EQ(events.GetCurInip(0, ip.data()), 1);
    EXPECT_EQ(ip.data(), box.ip);
    placePointer(1, 2);
    EXPECT_EQ(events.getInputMouseLocation(report.data()), 1);
    EXPECT_EQ(report[5] + 10 * report[7], 21);
    EXPECT_EQ(events.operationEvent(kMouseMove, ip.data(), nullptr, report.data()), 1);
    EXPECT_EQ(box.all(), "57 ab 04 01 00 01 00 02 00 00");
    EXPECT_EQ(events.releaseKey(), 1);
    EXPECT_EQ(box.all(), kKeysUp);
    EXPECT_EQ(events.releaseInput(ip.data()), 1);
    EXPECT_EQ(box.all(), std::string("57 ab 04 01 00 80 07 00 00 00 | ") + kKeysUp);
    EXPECT_EQ(events.syncLed(true) + events.sendRelease(), 0);
    EXPECT_EQ(events.MouseTo(0, 1), 0);
    EXPECT_EQ(events.MouseTo(0, 0), 1);
    unsigned key = 9;
    EXPECT_EQ(events.getCurrentInfo_(&key, true), 0);
    box.all();
    events.getChipVersion();
    EXPECT_EQ(box.text(), "link");
    InputViSocket = &toBoxes;
    events.TimegetChipVersion();
    EXPECT_EQ(box.text(), "link");
    EXPECT_EQ(events.slideScreenLeft() + events.slideScreenRight(), 0U);
    EXPECT_EQ(place(), "screen 0,0 cell 0,0 pointer 1920,100");
    EXPECT_EQ(events.slideScreenUp() + events.slideScreenDown(), 2U);
    EXPECT_EQ(place(), "screen 0,0 cell 0,0 pointer 1920,1080");
    EXPECT_TRUE(SoftwareConfig(root.path("data/x.ini")).LoadConfigToGlobal(false));
}

}  // namespace
