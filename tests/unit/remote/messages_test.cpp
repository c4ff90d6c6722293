#include <linux/input-event-codes.h>

#include <vector>

#include "remote/wire.h"
#include "unit/remote/board.h"

namespace {

InputRecord record(std::uint16_t code, std::int32_t value) { return {0, 0, EV_KEY, code, value}; }

class Event : public Board {
 protected:
    int send(EventType type, const std::string& ip, const InputRecord* ev = nullptr) {
        return events.operationEvent(type, ip.c_str(), ev, buffer.data());
    }
    wire::Absolute buffer{};
    Box box{"127.0.0.31"};
};

TEST_F(Event, MoveTakesTheFormThatTheBoxUnderstands) {
    Box user{ownAddress(), wire::kUserPort};
    placePointer(0x123, 0x45);
    events.remoteDx = 300;
    events.remoteDy = -2;
    buffer[wire::kButtonsAt] = wire::kRight;
    control(box);
    EXPECT_EQ(send(kMouseMove, box.ip), 1);
    EXPECT_EQ(box.bytes(), "57 ab 04 01 02 23 01 45 00 00");
    EXPECT_EQ(events.remoteDx, 300) << "absolute reports leave the motion alone";
    rel_enable = 1;
    send(kMouseMove, box.ip);
    EXPECT_EQ(box.bytes(), "57 ab 02 02 2c fe 00");
    send(kMouseMove, box.ip);
    EXPECT_EQ(box.bytes(), "57 ab 02 02 00 00 00") << "motion is sent once";
    controlUserBox(user);
    send(kMouseMove, box.ip);
    EXPECT_EQ(user.bytes(), "4b 00 02 07 02 5e 0b da 04 00 00");
    EXPECT_EQ(box.bytes(), "nothing");
}

TEST_F(Event, ButtonsArePressedOneByOneAndReleasedTogether) {
    struct Row {
        EventType type;
        std::uint16_t code;
        std::int32_t value;
        int buttons;
    };
    control(box);
    for (const Row& row : std::vector<Row>{{kMouseClick, BTN_LEFT, 1, 1},
                                           {kMouseClick, BTN_RIGHT, 1, 3},
                                           {kMouseClick, BTN_MIDDLE, 1, 7},
                                           {kMouseClick, BTN_SIDE, 0, 7},
                                           {kMouseClick, BTN_TOUCH, 1, 7},
                                           {kMouseClick, BTN_RIGHT, 0, 0},
                                           {kMouseClick, BTN_TOUCH, 1, 0},
                                           {kMouseButton, BTN_TOUCH, 1, 1},
                                           {kMouseButton, BTN_MIDDLE, 1, 5},
                                           {kMouseButton, BTN_SIDE, 1, 5},
                                           {kMouseButton, BTN_TOUCH, 0, 0},
                                           {kMouseButton, BTN_RIGHT, 1, 2},
                                           {kMouseButton, BTN_LEFT, 0, 0}}) {
        const InputRecord ev = record(row.code, row.value);
        send(row.type, box.ip, &ev);
        SCOPED_TRACE(testing::Message() << "code " << row.code << " value " << row.value);
        EXPECT_EQ(buffer[wire::kButtonsAt], row.buttons);
        EXPECT_EQ(box.bytes(), row.type == kMouseClick ? hex(buffer) : "nothing");
    }
}

TEST_F(Event, WheelIsPreparedAndFlushedAsItStands) {
    control(box);
    placePointer(9, 8);
    rel_enable = 1;
    const InputRecord ev = record(REL_WHEEL, -1);
    EXPECT_EQ(printedBy([&] { send(kMouseWheel, box.ip, &ev); }), "is wheel\n");
    EXPECT_EQ(box.bytes(), "nothing");
    EXPECT_EQ(hex(events.relativeReport.copy()), "57 ab 02 00 00 00 ff");
    is_user_ip = 1;
    EXPECT_EQ(printedBy([&] { send(kMouseFlush, box.ip); }), "");
    EXPECT_EQ(box.bytes(), "57 ab 04 01 00 09 00 08 00 ff") << "absolute whatever the box takes";
    EXPECT_EQ(printedBy([&] { send(kKeyboard, box.ip, &ev); }), "");
    EXPECT_EQ(box.bytes(), "nothing");
}

TEST_F(Event, NobodyIsSentNothing) {
    // A datagram to 0.0.0.0 would arrive at this very machine.
    Box here{"127.0.0.1"};
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
    EXPECT_EQ(here.bytes(), "nothing");
}

TEST_F(Event, UserReportsCarryOnlyTheFirstKey) {
    Box user{ownAddress(), wire::kUserPort};
    controlUserBox(user);
    port_add = 77;
    const wire::Keyboard keys{0x57, 0xAB, 0x01, 0x03, 0x00, 0x04, 0x05, 0x06};
    const wire::Absolute mouse{0, 0, 0, 0, 0x04, 0xFF, 0xFF, 0xFF, 0xFF, 0x02};
    placePointer(1, 2);
    EXPECT_EQ(events.user_send_mk(kKeyboard, mouse.data(), keys.data()), 1);
    EXPECT_EQ(user.bytes(), "4b 00 01 08 03 00 04 00 00 00 00 00");
    events.user_send_mk(kMouseClick, mouse.data(), keys.data());
    EXPECT_EQ(user.bytes(), "4b 00 02 07 04 0a 00 24 00 02 02") << "position is the console's own";
    events.user_send_mk(kMouseFlush, mouse.data(), keys.data());
    EXPECT_EQ(user.bytes(), "nothing");
}

class Mirror : public Event {
 protected:
    Mirror() {
        vr_mouse = 1;
        curOutIp.set(AddressText{output.ip});
        control(box);
        placePointer(300, 200);
        const InputRecord wheel = record(REL_WHEEL, 1);
        send(kMouseWheel, box.ip, &wheel);  // the flag that a wheel leaves is set from here on
    }
    Box output{ownAddress(), wire::kMirrorPort};
};

TEST_F(Mirror, ParksTheBoxesPointerUnlessTheWheelTurned) {
    send(kMouseMove, box.ip);
    EXPECT_EQ(box.bytes(), "nothing") << "the first motion after the wheel only clears the flag";
    EXPECT_EQ(output.bytes(), "57 ab 04 01 00 2c 01 c8 00 00");
    rel_enable = 1;
    send(kMouseMove, box.ip);
    EXPECT_EQ(box.bytes(), "57 ab 04 01 00 c0 03 38 04 00") << "bottom centre, absolute";
    EXPECT_EQ(box.bytes(), "nothing");
}

TEST_F(Mirror, SendsTwiceWhileAButtonIsDownOrTheWheelTurns) {
    const InputRecord wheel = record(REL_WHEEL, 1);
    EXPECT_EQ(printedBy([&] { send(kMouseMove, box.ip, &wheel); }), "is wheel\n(300,200)send  1\n");
    EXPECT_EQ(box.bytes(), "57 ab 04 01 00 2c 01 c8 00 00");
    EXPECT_EQ(box.bytes(), "57 ab 04 01 00 2c 01 c8 00 01");
    EXPECT_EQ(output.bytes(), "57 ab 04 01 00 2c 01 c8 00 01");
    buffer[wire::kButtonsAt] = wire::kLeft;
    rel_enable = 1;
    send(kMouseMove, box.ip);
    EXPECT_EQ(box.bytes(), "57 ab 02 01 00 00 00");
    EXPECT_EQ(box.bytes(), "nothing") << "a relative report goes once";
}

TEST_F(Mirror, DrawsTheCellsOfASplitScreenAtHalfSize) {
    buildWall({"0,0," + output.ip + "#0,0,127.0.0.31#2,1,127.0.0.32"}, output.ip);
    currentInfo.with([](currentCtl& now) { now.cellX = 2, now.cellY = 1; });
    placePointer(300, 201);
    const InputRecord press = record(BTN_LEFT, 1);
    send(kMouseClick, "0.0.0.0", &press);
    // 300 / 3 + 2 * 960 = 2020, 201 / 2 + 540 = 640; the wheel byte stands from before.
    EXPECT_EQ(output.bytes(), "57 ab 04 01 01 e4 07 80 02 01");
}

}  // namespace
