#include "unit/remote/board.h"

namespace {

class CurrentScreen : public Board {
 protected:
    CurrentScreen() {
        buildWall({"0,0,10.0.0.1#1,1,10.0.1.1", "1,0,10.0.0.2-5", "1,1,10.0.0.20"}, "10.0.0.1");
    }
    static void stand(unsigned cellX, unsigned cellY, int x, int y) {
        currentInfo.with([=](currentCtl& now) { now.cellX = cellX, now.cellY = cellY; });
        placePointer(x, y);
    }
    int select(unsigned key, bool flag) { return events.getCurrentInfo_(&key, flag); }
};

TEST_F(CurrentScreen, IsTheFirstWhoseNameBeginsSo) {
    stand(1, 1, 50, 60);
    EXPECT_EQ(printedBy([] { EXPECT_EQ(getCurrentInfo(nullptr, "10.0.0.2"), 1); }),
              "not find outIp:10.0.0.2 in map\n"
              "name:10.0.0.2-5 ip:10.0.0.2\n"
              "this is a singal screen\n");
    EXPECT_EQ(place(), "screen 1,0 cell 0,0 pointer 0,0");
    EXPECT_EQ(currentInfo.copy().screen.single, 1);
    EXPECT_EQ(curOutIp.copy().view(), "10.0.0.2");
    EXPECT_TRUE(printedBy([] {
                    EXPECT_EQ(getCurrentInfo(nullptr, "10.0.0.1"), 1);
                }).ends_with("this is multi_screen-->2x2\n"));
    EXPECT_EQ(currentInfo.copy().screen.single, 0);
    EXPECT_EQ(getCurrentInfo(nullptr, "10.0.0.3"), 0);
    EXPECT_EQ(place(), "screen 0,0 cell 0,0 pointer 0,0");
    printedBy([] { osdIpMapSet("0,0,10.7.7.7", "out", nullptr); });
    EXPECT_EQ(currentInfo.copy().screen.cells.size(), 2U) << "a private copy";
}

TEST_F(CurrentScreen, ByKeyArrivesAtTheEdge) {
    stand(1, 1, 1921, 600);
    unsigned key = 0x10000;
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(getCurrentInfo(&key, ""), 1); }),
              "get outkey:0x10000\nfind\n");
    EXPECT_EQ(place(), "screen 1,0 cell 0,0 pointer 0,600");
    EXPECT_EQ(currentInfo.copy().screen.single, 1);
    EXPECT_EQ(curOutIp.copy().view(), "10.0.0.1") << "stays on this path";
    key = 0x20000;
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(getCurrentInfo(&key, ""), 0); }),
              "get outkey:0x20000\nfind\nthe mouse in the output boundary\n");
    key = 0x10000;
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(getCurrentInfo(&key, ""), 1); }),
              "get outkey:0x10000\nfind\nmove out error\n");
}

TEST_F(CurrentScreen, MemberFormScalesOrKeepsThePointer) {
    stand(1, 1, 1921, 600);
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(select(0x10000, false), 1); }),
              "current out location(0,0) out key 65536\n"
              "input 0,x:0x1,y:0x0,int x:1, y:1\n"
              "start cp\nend cp\n");
    EXPECT_EQ(place(), "screen 1,0 cell 0,0 pointer 0,811");  // 600 / 2 + 511
    EXPECT_EQ(currentInfo.copy().screen.single, 1);
    stand(0, 0, 5, 6);
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(select(0x10000, false), 1); }),
              "current out location(1,0) out key 65536\n"
              "input 0,x:0x1,y:0x0,int x:1, y:1\n"
              "output 0,input 0\nstart cp\nend cp\n");
    EXPECT_EQ(place(), "screen 1,0 cell 0,0 pointer 5,6");
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(select(0x7, true), 0); }),
              "current out location(1,0) out key 7\nthe mouse in the output boundary\n");
    stand(3, 3, 44, 55);
    EXPECT_EQ(select(0x10001, true), 1);
    EXPECT_EQ(place(), "screen 1,1 cell 0,0 pointer 44,55");
    EXPECT_EQ(currentInfo.copy().screen.single, 0) << "as stored in the wall";
    EXPECT_EQ(events.getCurrentInfo_(nullptr, true), 0);
}

TEST_F(CurrentScreen, CellIsSelectedWithWhatIsKnownOfItsBox) {
    AddressText ip;
    rel_enable = 1;
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(events.GetCurInip(0x10000, ip), 0); }), "not find curIp\n");
    EXPECT_EQ(curOutIp.copy().view(), "127.0.0.1");
    EXPECT_EQ(rel_enable, 0);

    Box before{"127.0.0.31"};
    control(before);
    curName.set(AddressText{"old"});
    vi_info.with([](auto& records) {
        records[1] = {1, AddressText{"10.0.1.1"}, 800, 600};
        records[2] = {1, AddressText{"10.9.9.2"}, 640, 480};
    });
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(events.GetCurInip(0x10001, ip), 1); }),
              "name:10.0.0.1 ip:10.0.0.1\n"
              "name:10.0.1.1 ip:10.0.1.1\n"
              "--->get vi info (800,600),rel:1<---\n");
    EXPECT_EQ(before.bytes(), "57 ab 01 00 00 00 00 00 00 00 00")
        << "to the box that loses control";
    EXPECT_EQ(curIp.copy().view(), before.ip) << "the caller's to change";
    EXPECT_EQ(ip.view(), "10.0.1.1");
    EXPECT_EQ(curName.copy().view(), "10.0.1.1");
    EXPECT_EQ(XRIGHT * 10000 + YDOWN, 8000600);
    EXPECT_EQ(rel_enable, 1);
    EXPECT_EQ(port_add, 0) << "the name has no offset";

    is_user_ip = 1;
    events.GetCurInip(0, ip);
    EXPECT_EQ(ip.view(), "0.0.0.0");
    EXPECT_EQ(rel_enable, 0);
    EXPECT_EQ(is_user_ip, 1) << "a cell without an input leaves it";
    EXPECT_EQ(XRIGHT * 10000 + YDOWN, 19201080);

    listAsUserBox("10.0.0.9");
    listAsUserBox("10.0.1.1");
    EXPECT_TRUE(printedBy([&] {
                    events.GetCurInip(0x10001, ip);
                }).ends_with("this is user ip :10.0.1.1\n--->get vi info (800,600),rel:1<---\n"));
    EXPECT_EQ(is_user_ip, 1);
    EXPECT_EQ(XRIGHT * 10000 + YDOWN, 19201080) << "a user-list box has a fixed size";
    user_n = 1;
    events.GetCurInip(0x10001, ip);
    EXPECT_EQ(is_user_ip, 0);
}

}  // namespace
