#include <linux/input-event-codes.h>

#include "remote/wire.h"
#include "unit/remote/board.h"

namespace {

InputRecord record(std::uint16_t code, std::int32_t value) { return {0, 0, EV_KEY, code, value}; }

class Event : public Board {
 protected:
    void send(EventType type, const std::string& ip, const InputRecord* ev = nullptr) {
        EXPECT_EQ(events.operationEvent(type, ip.c_str(), ev, buffer.data()), 1);
    }
    wire::Absolute buffer{};
    Box box{"127.0.0.31"};
};

TEST_F(Event, ButtonsArePressedOneByOneAndReleasedTogether) {
    control(box);
    using Row = std::tuple<EventType, std::uint16_t, std::int32_t, int>;
    for (const auto& [type, code, value, buttons] :
         {Row{kMouseClick, BTN_LEFT, 1, 1}, Row{kMouseClick, BTN_RIGHT, 1, 3},
          Row{kMouseClick, BTN_MIDDLE, 1, 7}, Row{kMouseClick, BTN_SIDE, 0, 7},
          Row{kMouseClick, BTN_TOUCH, 1, 7}, Row{kMouseClick, BTN_RIGHT, 0, 0},
          Row{kMouseClick, BTN_TOUCH, 1, 0}, Row{kMouseButton, BTN_TOUCH, 1, 1},
          Row{kMouseButton, BTN_MIDDLE, 1, 5}, Row{kMouseButton, BTN_SIDE, 1, 5},
          Row{kMouseButton, BTN_TOUCH, 0, 0}, Row{kMouseButton, BTN_RIGHT, 1, 2},
          Row{kMouseButton, BTN_LEFT, 0, 0}}) {
        const InputRecord ev = record(code, value);
        send(type, box.ip, &ev);
        EXPECT_EQ(buffer[wire::kButtonsAt], buttons) << "code " << code << " value " << value;
        EXPECT_EQ(box.all(), type == kMouseClick ? hex(buffer) : "");
    }
}

TEST_F(Event, WheelIsPreparedAndFlushedAsItStands) {
    control(box);
    placePointer(9, 8);
    rel_enable = 1;
    const InputRecord ev = record(REL_WHEEL, -1);
    EXPECT_EQ(printedBy([&] { send(kMouseWheel, box.ip, &ev); }), "is wheel\n");
    EXPECT_EQ(hex(events.relativeReport.copy()), "57 ab 02 00 00 00 ff");
    EXPECT_EQ(printedBy([&] { send(kMouseFlush, box.ip); }), "");
    EXPECT_EQ(box.all(), "57 ab 04 01 00 09 00 08 00 ff") << "absolute whatever the box takes";
}

TEST_F(Event, NobodyIsSentNothing) {
    Box here{"127.0.0.1"};  // a datagram to 0.0.0.0 would arrive at this very machine
    port_add = here.port - 80;
    const InputRecord ev = record(BTN_LEFT, 1);
    for (const char* ip : {"0.0.0.0", ""}) {
        curIp.set(AddressText{ip});
        for (const EventType type : {kMouseMove, kMouseClick, kMouseFlush}) {
            send(type, ip, &ev);
        }
        events.releaseKey();
        events.releaseInput(ip);
        is_user_ip = 1;
        events.sendRelease();
        is_user_ip = 0;
    }
    EXPECT_EQ(here.all(), "");
}

TEST_F(Event, OnPauseABoxOfTheUserListIsReleasedInTheOtherForm) {
    control(box);
    is_user_ip = 1;
    placePointer(258, 3);
    EXPECT_EQ(events.sendRelease(), 0);
    EXPECT_EQ(box.all(), std::string("57 ab 04 01 00 02 01 03 00 00 | ") + kKeysUp);
    Box user{ownAddress(), wire::kUserPort};
    curIp.set(AddressText{user.ip});
    events.releaseInput(box.ip.c_str());
    EXPECT_EQ(user.all(), "4b 00 01 08 00 00 00 00 00 00 00 00");
    EXPECT_EQ(box.all(), "");
}

TEST_F(Event, LightsAreSentOnlyWithAKeyboard) {
    control(box);
    for (const int none : {-1, 0}) {
        events.ledKeyFd.set(none);
        EXPECT_EQ(printedBy([&] { EXPECT_EQ(events.syncLed(true), 0); }),
                  "not get act key or not input ip\n");
    }
    EXPECT_EQ(box.text(), "nothing");
    events.ledKeyFd.set(STDERR_FILENO);
    events.capsLockOn = events.numLockOn = 1;
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(events.syncLed(false), 1); }), "get buff:0x0\n");
    EXPECT_EQ(events.capsLockOn + events.numLockOn, 0);
    EXPECT_EQ(box.text(), "nothing");
}

TEST_F(Event, MirrorDrawsTheCellsOfASplitScreenAtHalfSize) {
    Box output{ownAddress(), wire::kMirrorPort};
    vr_mouse = 1;
    control(box);
    buildWall({"0,0," + output.ip + "#0,0,127.0.0.31#2,1,127.0.0.32"}, output.ip);
    placeCell(2, 1);
    placePointer(300, 201);
    send(kMouseMove, box.ip);
    // 300 / 3 + 2 * 960 = 2020, 201 / 2 + 540 = 640.
    EXPECT_EQ(output.all(), "57 ab 04 01 00 e4 07 80 02 00");
}

}  // namespace
