#include "remote/select_input.h"
#include "remote/wire.h"
#include "unit/remote/board.h"

namespace {

class CurrentScreen : public Board {
 protected:
    CurrentScreen() {
        buildWall({"0,0,10.0.0.1#1,1,10.0.1.1", "1,0,10.0.0.2-5", "1,1,10.0.0.20"}, "10.0.0.1");
    }
};

TEST_F(CurrentScreen, IsTheFirstWhoseNameBeginsSo) {
    placeCell(1, 1);
    placePointer(50, 60);
    EXPECT_EQ(printedBy([] { EXPECT_EQ(getCurrentInfo(nullptr, "10.0.0.2"), 1); }),
              "not find outIp:10.0.0.2 in map\nname:10.0.0.2-5 ip:10.0.0.2\n"
              "this is a singal screen\n");
    EXPECT_EQ(place(), "screen 1,0 cell 0,0 pointer 0,0");
    EXPECT_EQ(currentInfo.copy().screen.single, 1);
    EXPECT_EQ(curOutIp.copy().view(), "10.0.0.2");
    EXPECT_TRUE(printedBy([] {
                    EXPECT_EQ(getCurrentInfo(nullptr, "10.0.0.1"), 1);
                }).ends_with("this is multi_screen-->2x2\n"));
    EXPECT_EQ(currentInfo.copy().screen.single, 0);
    EXPECT_EQ(getCurrentInfo(nullptr, "10.0.0.3"), 0);
    unsigned hole = 0x20000;
    EXPECT_EQ(getCurrentInfo(&hole, ""), 0);
    EXPECT_EQ(place(), "screen 0,0 cell 0,0 pointer 0,0");
    osdIpMapSet("0,0,10.7.7.7", "out", nullptr);
    EXPECT_EQ(currentInfo.copy().screen.cells.size(), 2U) << "a private copy";
}

TEST_F(CurrentScreen, CellIsSelectedWithWhatIsKnownOfItsBox) {
    AddressText ip;
    Box before{"127.0.0.31"};
    control(before);
    vi_info.with([](auto& records) {
        records[1] = {1, AddressText{"10.0.1.1"}, 800, 600};
        records[2] = {1, AddressText{"10.9.9.2"}, 640, 480};
    });
    const std::string names = "name:10.0.0.1 ip:10.0.0.1\nname:10.0.1.1 ip:10.0.1.1\n";
    const std::string known = "--->get vi info (800,600),rel:1<---\n";
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(events.GetCurInip(0x10001, ip), 1); }), names + known);
    EXPECT_EQ(before.all(), kKeysUp) << "to the box that loses control";
    EXPECT_EQ(curIp.copy().view(), before.ip) << "the caller's to change";
    EXPECT_EQ(ip.view(), "10.0.1.1");
    EXPECT_EQ(curName.copy().view(), "10.0.1.1");
    is_user_ip = 1;
    events.GetCurInip(0, ip);
    EXPECT_EQ(ip.view(), "0.0.0.0");
    EXPECT_EQ(rel_enable, 0);
    EXPECT_EQ(is_user_ip, 1) << "a cell without an input leaves it";
    EXPECT_EQ(XRIGHT * 10000 + YDOWN, 19201080);
    listAsUserBox("10.0.0.9");
    listAsUserBox("10.0.1.1");
    EXPECT_EQ(printedBy([&] { events.GetCurInip(0x10001, ip); }),
              names + "this is user ip :10.0.1.1\n" + known);
    EXPECT_EQ(XRIGHT * 10000 + YDOWN, 19201080) << "a user-list box has a fixed size";
    user_n = 1;
    events.GetCurInip(0x10001, ip);
    EXPECT_EQ(is_user_ip, 0);
}

TEST_F(CurrentScreen, ACellOrScreenThatIsNotThereIsEnteredAllTheSame) {
    outInfo_.set({});
    rel_enable = 1;
    buildWall({"0,0,10.0.0.1#1,0,10.0.1.1#0,1,10.0.1.2", "1,0,10.0.0.2"}, "10.0.0.1");
    placeCell(0, 1);
    placePointer(700, 400);
    EXPECT_EQ(printedBy([this] { EXPECT_EQ(events.slideScreenRight(), 1U); }),
              "------right input------\nnot find curIp\nerror can not get input ip\n");
    EXPECT_EQ(place(), "screen 0,0 cell 1,1 pointer 0,400");
    EXPECT_EQ(curIp.copy().view(), "");
    EXPECT_EQ(rel_enable, 0);
    EXPECT_EQ(curOutIp.copy().view(), "127.0.0.1");
    placeCell(1, 0);
    osdIpMapSet("10.0.0.2", "in", nullptr);
    EXPECT_EQ(printedBy([this] { EXPECT_EQ(events.slideScreenRight(), 1U); }),
              "------right output------\ncurrent out location(0,0) out key 65536\n"
              "input 0,x:0x1,y:0x0,int x:0, y:0\nstart cp\nend cp\n"
              "start inkey:0\nnot find curIp\nnot get new inIp\n");
    EXPECT_EQ(place(), "screen 1,0 cell 0,0 pointer 0,400");
}

TEST_F(CurrentScreen, EdgesAreThoseOfThePictureAndTheScreensOsdIsToldTheCell) {
    Box osd{ownAddress(), wire::kOsdCommandPort};
    KvmSetSocket = &toBoxes;
    qtFlag = 0;
    XRIGHT = 1280;
    YDOWN = 720;
    outInfo_.set({});
    buildWall({"0,0," + osd.ip + "#1,1,0.0.0.0", "1,0," + osd.ip}, osd.ip);
    placeCell(1, 1);
    placePointer(1281, 300);
    events.slideScreenRight();
    EXPECT_EQ(place(), "screen 1,0 cell 0,0 pointer 0,661");  // 300 / 2 + 511
    EXPECT_EQ(currentInfo.copy().screen.single, 1);
    EXPECT_EQ(osd.text(), "TO:" + osd.ip + ",0,0");
    EXPECT_EQ(events.slideScreenRight() + 10 * events.slideScreenDown(), 10U);
    EXPECT_EQ(place(), "screen 1,0 cell 0,0 pointer 1280,720");
    EXPECT_EQ(osd.text(), "nothing") << "at the border of the wall";
    events.slideScreenLeft();
    EXPECT_EQ(place(), "screen 0,0 cell 1,1 pointer 1280,418");  // (720 - 511) * 2
    EXPECT_EQ(osd.text(), "TO:" + osd.ip + ",1,1");
}

TEST_F(CurrentScreen, OffsetOfANameIsKeptUnlessItIsNone) {
    const std::pair<const char*, int> rows[] = {
        {"10.0.0.1-8000", 8000}, {"10.0.0.1", 5},   {"10.0.0.1-2-3", 2}, {"10.0.0.1-65535", 65535},
        {"10.0.0.1-65536", 0},   {"10.0.0.1-x", 0}, {"10.0.0.1--1", 0}};
    for (const auto& [name, offset] : rows) {
        port_add = 5;
        get_in_port(name);
        EXPECT_EQ(port_add, offset) << name;
    }
}

}  // namespace
