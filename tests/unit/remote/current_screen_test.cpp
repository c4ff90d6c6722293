#include "remote/edge_crossing.h"
#include "remote/selection.h"
#include "remote/wire.h"
#include "unit/remote/remote_state.h"

namespace {

class CurrentScreen : public RemoteState {
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
    EXPECT_EQ(boxInControl().curOutIp.view(), "10.0.0.2");
    EXPECT_TRUE(printedBy([] {
                    EXPECT_EQ(getCurrentInfo(nullptr, "10.0.0.1"), 1);
                }).ends_with("this is multi_screen-->2x2\n"));
    EXPECT_EQ(currentInfo.copy().screen.single, 0);
    EXPECT_EQ(getCurrentInfo(nullptr, "10.0.0.3"), 0);
    unsigned hole = 0x20000;
    EXPECT_EQ(getCurrentInfo(&hole, ""), 0);
    EXPECT_EQ(getCurrentInfo_(&hole, false) + getCurrentInfo_(nullptr, false), 0);
    EXPECT_EQ(place(), "screen 0,0 cell 0,0 pointer 0,0");
    osdIpMapSet("0,0,10.7.7.7", "out", nullptr);
    EXPECT_EQ(currentInfo.copy().screen.cells.size(), 2U) << "a private copy";
}

TEST_F(CurrentScreen, ByKeyIsEnteredOverTheEdgeThatLiesBetween) {
    placeCell(1, 1);
    placePointer(1921, 60);
    unsigned key = 0x10001;
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(getCurrentInfo(&key, ""), 1); }),
              "get outkey:0x10001\nfind\nmove out error\n");
    EXPECT_EQ(place(), "screen 1,1 cell 1,1 pointer 1921,60");
    key = 0x10000;
    getCurrentInfo(&key, "");
    EXPECT_EQ(place(), "screen 1,0 cell 0,0 pointer 1921,1080");
    key = 0;
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(getCurrentInfo(&key, ""), 1); }), "get outkey:0x0\nfind\n");
    EXPECT_EQ(place(), "screen 0,0 cell 1,0 pointer 1920,1080");
}

TEST_F(CurrentScreen, CellIsSelectedWithWhatIsKnownOfItsBox) {
    char ip[AddressText::kSize] = "old";
    vi_info.with([](auto& records) {
        records[1] = {1, AddressText{"10.0.1.1"}, 800, 600};
        records[2] = {1, AddressText{"10.9.9.2"}, 640, 480};
    });
    const std::string names = "name:10.0.0.1 ip:10.0.0.1\nname:10.0.1.1 ip:10.0.1.1\n";
    const std::string known = "--->get vi info (800,600),rel:1<---\n";
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(GetCurInip(0x10001, ip), 1); }), names + known);
    EXPECT_STREQ(ip, "10.0.1.1");
    EXPECT_EQ(boxInControl().curIp.view(), "10.0.1.1");
    EXPECT_EQ(boxInControl().curName.view(), "10.0.1.1");
    EXPECT_EQ(picture(), "800x600 rel 1");
    change([](BoxInControl& box) { box.is_user_ip = true; });
    GetCurInip(0, ip);
    EXPECT_STREQ(ip, "0.0.0.0");
    EXPECT_TRUE(boxInControl().is_user_ip) << "a cell without an input leaves it";
    EXPECT_EQ(picture(), "1920x1080 rel 0");
    listAsUserBox("10.0.0.9");
    listAsUserBox("10.0.1.1");
    EXPECT_EQ(printedBy([&] { GetCurInip(0x10001, ip); }),
              names + "this is user ip :10.0.1.1\n" + known);
    EXPECT_EQ(picture(), "1920x1080 rel 1") << "a user-list box has a fixed size";
    user_n = 1;
    GetCurInip(0x10001, ip);
    EXPECT_FALSE(boxInControl().is_user_ip);
}

TEST_F(CurrentScreen, ACellOrScreenThatIsNotThereIsEnteredAllTheSame) {
    buildWall({"0,0,10.0.0.1#1,0,10.0.1.1#0,1,10.0.1.2", "1,0,10.0.0.2"}, "10.0.0.1");
    change([](BoxInControl& box) { box.rel_enable = true; });
    placeCell(0, 1);
    placePointer(700, 400);
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(cross(console, Direction::kRight), 1U); }),
              "------right input------\nnot find curIp\nerror can not get input ip\n");
    EXPECT_EQ(place(), "screen 0,0 cell 1,1 pointer 0,400");
    EXPECT_EQ(picture(), "1920x1080 rel 0");
    EXPECT_EQ(boxInControl().curIp, AddressText{});
    EXPECT_EQ(boxInControl().curOutIp.view(), "127.0.0.1");
    placeCell(1, 0);
    osdIpMapSet("10.0.0.2", "in", nullptr);
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(cross(console, Direction::kRight), 1U); }),
              "------right output------\ncurrent out location(0,0) out key 65536\n"
              "input 0,x:0x1,y:0x0,int x:0, y:0\nstart cp\nend cp\n"
              "start inkey:0\nnot find curIp\nnot get new inIp\n");
    EXPECT_EQ(place(), "screen 1,0 cell 0,0 pointer 0,400");
}

TEST_F(CurrentScreen, EdgesAreThoseOfThePictureAndTheScreensOsdIsToldTheCell) {
    Receiver osd{ownAddress(), wire::kOsdCommandPort};
    KvmSetSocket = &toBoxes;
    qtFlag = 0;
    buildWall({"0,0," + osd.ip + "#1,1,0.0.0.0", "1,0," + osd.ip}, osd.ip);
    change([](BoxInControl& box) { box.XRIGHT = 1280, box.YDOWN = 720; });
    placeCell(1, 1);
    placePointer(1281, 300);
    cross(console, Direction::kRight);
    EXPECT_EQ(place(), "screen 1,0 cell 0,0 pointer 0,661");  // 300 / 2 + 511
    EXPECT_EQ(currentInfo.copy().screen.single, 1);
    EXPECT_EQ(osd.text(), "TO:" + osd.ip + ",0,0");
    EXPECT_EQ(cross(console, Direction::kRight) + 10 * cross(console, Direction::kDown), 10U);
    EXPECT_EQ(place(), "screen 1,0 cell 0,0 pointer 1280,720");
    crossByArrow(console, Direction::kUp);
    EXPECT_EQ(place(), "screen 1,0 cell 0,0 pointer 1280,620") << "inside, at the border too";
    EXPECT_EQ(osd.text(), "nothing") << "at the border of the wall";
    placePointer(0, 720);
    crossByArrow(console, Direction::kLeft);
    EXPECT_EQ(place(), "screen 0,0 cell 1,1 pointer 1180,418");  // (720 - 511) * 2
    EXPECT_EQ(osd.text(), "TO:" + osd.ip + ",1,1");
    for (const auto& [to, where] : {std::pair{Direction::kDown, "1180,100"},
                                    {Direction::kRight, "100,"},
                                    {Direction::kLeft, "1180,"}}) {
        crossByArrow(console, to);
        EXPECT_NE(place().find(std::string("pointer ") + where), std::string::npos) << place();
    }
}

TEST_F(CurrentScreen, OffsetOfANameIsItsNumberOrNone) {
    const std::tuple<const char*, int, bool> rows[] = {
        {"10.0.0.1-8000", 8000, true},   {"10.0.0.1", 0, true},        {"10.0.0.1-2-3", 2, true},
        {"10.0.0.1-65535", 65535, true}, {"10.0.0.1-65536", 0, false}, {"10.0.0.1-x", 0, false},
        {"10.0.0.1--1", 0, false}};
    for (const auto& [name, offset, usable] : rows) {
        const std::string line = "no port offset in " + std::string(name) + "\n";
        EXPECT_EQ(printedBy([&, of = name, is = offset] { EXPECT_EQ(get_in_port(of), is); }),
                  usable ? "" : line);
    }
}

}  // namespace
