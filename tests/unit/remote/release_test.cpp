#include <fcntl.h>

#include "remote/select_input.h"
#include "remote/wire.h"
#include "unit/remote/board.h"

namespace {

constexpr const char* kKeysUp = "57 ab 01 00 00 00 00 00 00 00 00";
constexpr const char* kUserKeysUp = "4b 00 01 08 00 00 00 00 00 00 00 00";

class Release : public Board {
 protected:
    Box box{"127.0.0.31"};
    Box user{ownAddress(), wire::kUserPort};
};

TEST_F(Release, OfABoxParksThePointerInTheTopRightCorner) {
    control(box);
    XRIGHT = 1280;
    EXPECT_EQ(events.releaseInput(box.ip.c_str()), 1);
    EXPECT_EQ(box.bytes(), "57 ab 04 01 00 00 05 00 00 00");
    EXPECT_EQ(box.bytes(), kKeysUp);
    EXPECT_EQ(events.releaseKey(), 1);
    EXPECT_EQ(box.bytes(), kKeysUp);
    EXPECT_EQ(box.bytes(), "nothing");
    controlUserBox(user);
    events.releaseInput(box.ip.c_str());
    EXPECT_EQ(user.bytes(), kUserKeysUp);
    EXPECT_EQ(user.bytes(), "nothing");
    EXPECT_EQ(box.bytes(), "nothing");
}

TEST_F(Release, OnPauseTakesTheOtherKindsForm) {
    curIp.set(AddressText{user.ip});
    EXPECT_EQ(events.sendRelease(), 0);
    EXPECT_EQ(user.bytes(), kUserKeysUp);
    control(box);
    is_user_ip = 1;
    placePointer(258, 3);
    events.sendRelease();
    EXPECT_EQ(box.bytes(), "57 ab 04 01 00 02 01 03 00 00");
    EXPECT_EQ(box.bytes(), kKeysUp);
    EXPECT_EQ(user.bytes(), "nothing");
}

TEST_F(Release, LightsAreSentOnlyWithAKeyboard) {
    control(box);
    for (const int none : {-1, 0}) {
        events.ledKeyFd.set(none);
        EXPECT_EQ(printedBy([&] { EXPECT_EQ(events.syncLed(true), 0); }),
                  "not get act key or not input ip\n");
    }
    const int fd = open("/dev/null", O_RDWR | O_CLOEXEC);
    events.ledKeyFd.set(fd);
    events.capsLockOn = 1;
    events.numLockOn = 1;
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(events.syncLed(false), 1); }), "get buff:0x0\n");
    EXPECT_EQ(events.capsLockOn + events.numLockOn, 0);
    EXPECT_EQ(box.text(), "nothing");
    events.syncLed(true);
    EXPECT_EQ(box.text(), "out&capslock=off#numlock=off");
    close(fd);
}

TEST_F(Release, OffsetOfANameIsKeptUnlessItIsNone) {
    struct Row {
        const char* name;
        int offset;
    };
    for (const Row& row : {Row{"10.0.0.1-8000", 8000}, Row{"10.0.0.1", 5}, Row{"10.0.0.1-2-3", 2},
                           Row{"10.0.0.1-65535", 65535}, Row{"10.0.0.1-65536", 0},
                           Row{"10.0.0.1-x", 0}, Row{"10.0.0.1--1", 0}}) {
        port_add = 5;
        get_in_port(row.name);
        EXPECT_EQ(port_add, row.offset) << row.name;
    }
}

TEST_F(Release, MouseToSelectsTheFirstCellOfTheScreen) {
    Box next{"127.0.0.32"};
    buildWall({"0,0,10.0.0.1#0,0," + box.name(), "2,0,10.0.0.3#0,0," + next.name()}, "10.0.0.1");
    control(box);
    placePointer(7, 7);
    for (const auto& [x, y] : {std::pair{-1, 0}, {3, 0}, {0, -1}, {0, 1}}) {
        EXPECT_EQ(
            printedBy([&, x = x, y = y] { EXPECT_EQ(events.MouseTo(x, y), 0); }),
            "mouset to location error->(" + std::to_string(x) + "," + std::to_string(y) + ")\n");
        EXPECT_EQ(box.bytes(), "57 ab 04 01 00 80 07 00 00 00") << "released all the same";
        EXPECT_EQ(box.bytes(), kKeysUp);
    }
    EXPECT_EQ(place(), "screen 0,0 cell 0,0 pointer 7,7");
    listAsUserBox(next.ip);
    EXPECT_EQ(events.MouseTo(2, 0), 1);
    EXPECT_EQ(place(), "screen 2,0 cell 0,0 pointer 100,100");
    EXPECT_EQ(curIp.copy().view(), next.ip);
    EXPECT_EQ(curName.copy().view(), next.name());
    EXPECT_EQ(curOutIp.copy().view(), "10.0.0.3");
    EXPECT_EQ(port_add.load(), next.port - 80);
    EXPECT_EQ(next.bytes(), "nothing") << "a user-list box gets neither lights nor a query";
    EXPECT_EQ(events.queryInProgress, 0);
}

}  // namespace
