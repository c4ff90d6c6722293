#include <memory>
#include <vector>

#include "remote/wire.h"
#include "unit/remote/board.h"

namespace {

constexpr const char* kKeysUp = "57 ab 01 00 00 00 00 00 00 00 00";

using Slide = unsigned (inputevent_::*)();
constexpr Slide kLeft = &inputevent_::slideScreenLeft;
constexpr Slide kRight = &inputevent_::slideScreenRight;
constexpr Slide kUp = &inputevent_::slideScreenUp;
constexpr Slide kDown = &inputevent_::slideScreenDown;

class Edge : public Board {
 protected:
    struct Row {
        const char* what;
        Slide slide;
        const char* stand;  ///< screen, cell
        unsigned result;
        const char* place;
        std::string printed;
    };

    void standAt(const char* where) {
        unsigned outX = 0;
        unsigned outY = 0;
        unsigned cellX = 0;
        unsigned cellY = 0;
        ASSERT_EQ(std::sscanf(where, "%u,%u %u,%u", &outX, &outY, &cellX, &cellY), 4);
        const unsigned key = gridKey(outX, outY);
        printedBy([&] { ASSERT_EQ(events.getCurrentInfo_(&key, true), 1); });
        currentInfo.with([=](currentCtl& now) {
            now.cellX = cellX;
            now.cellY = cellY;
        });
        placePointer(700, 400);
        curIp.set(AddressText{AddressText::kNone});
    }

    void check(const std::vector<Row>& rows) {
        for (const Row& row : rows) {
            SCOPED_TRACE(row.what);
            standAt(row.stand);
            unsigned result = 9;
            EXPECT_EQ(printedBy([&] { result = (events.*row.slide)(); }), row.printed);
            EXPECT_EQ(result, row.result);
            EXPECT_EQ(place(), row.place);
        }
    }
};

/// What a selection of `cell` on `screen` prints.
std::string selected(const std::string& screen, const std::string& cell) {
    return "name:" + screen + " ip:" + screen + "\nname:" + cell + " ip:" + cell + "\n";
}

std::string screenChange(const std::string& from, unsigned key, const std::string& to) {
    return "current out location(" + from + ") out key " + std::to_string(key) + "\ninput 0," + to +
           "\nstart cp\nend cp\n";
}

TEST_F(Edge, WithinAScreenTheNeighbouringCellTakesOver) {
    // Boxes of the user list are neither lit nor asked, so the rows hold nothing but the crossing.
    for (const char* ip : {"127.9.0.1", "127.9.0.2", "127.9.0.3"}) {
        listAsUserBox(ip);
    }
    buildWall({"0,0,10.0.0.1#0,0,127.9.0.1#1,0,127.9.0.2#0,1,127.9.0.3"}, "10.0.0.1");
    const auto got = [](const std::string& ip) {
        return selected("10.0.0.1", ip) + "this is user ip :" + ip + "\n";
    };
    check({
        {"right", kRight, "0,0 0,0", 1, "screen 0,0 cell 1,0 pointer 0,400",
         "------right input------\n" + got("127.9.0.2") +
             "get(0x2bc,0x190) output location:0,0-->10.0.0.1   input locationt:1,0--->127.9.0.2\n"},
        {"left", kLeft, "0,0 1,0", 1, "screen 0,0 cell 0,0 pointer 1920,400",
         "------left input\n------" + got("127.9.0.1") + "get new in 0,0->Ip:127.9.0.1\n"},
        {"down", kDown, "0,0 0,0", 1, "screen 0,0 cell 0,1 pointer 700,0",
         "------down input\n------" + got("127.9.0.3") +
             "get new (0,0)10.0.0.1 in 0,1->Ip:127.9.0.3\n"},
        {"up", kUp, "0,0 0,1", 1, "screen 0,0 cell 0,0 pointer 700,1080",
         "------up input\n------" + got("127.9.0.1") + "get new in 0,0->Ip:127.9.0.1\n"},
        {"no such cell", kRight, "0,0 0,1", 1, "screen 0,0 cell 1,1 pointer 0,400",
         "------right input------\nnot find curIp\nerror can not get input ip\n"},
    });
    EXPECT_EQ(curIp.copy().view(), "");
    EXPECT_EQ(curOutIp.copy().view(), "127.0.0.1");
}

TEST_F(Edge, AcrossScreensTheNeighbourTakesOver) {
    buildWall({"0,0,10.0.0.1", "1,0,10.0.0.2", "0,1,10.0.0.3"}, "10.0.0.1");
    const std::string one = "int x:1, y:1";
    check({
        {"right", kRight, "0,0 0,0", 1, "screen 1,0 cell 0,0 pointer 0,400",
         "------right output------\n" + screenChange("0,0", 0x10000, "x:0x1,y:0x0," + one) +
             "start inkey:0\n" + selected("10.0.0.2", "0.0.0.0") + "get new in 0,0->Ip:0.0.0.0\n"},
        {"left", kLeft, "1,0 0,0", 1, "screen 0,0 cell 0,0 pointer 1920,400",
         "------left output\n------" + screenChange("1,0", 0, "x:0x0,y:0x0," + one) +
             selected("10.0.0.1", "0.0.0.0") + "get new in 0,0->Ip:0.0.0.0\n"},
        {"down", kDown, "0,0 0,0", 1, "screen 0,1 cell 0,0 pointer 700,0",
         "------down output\n------" + screenChange("0,0", 1, "x:0x0,y:0x1," + one) +
             selected("10.0.0.3", "0.0.0.0") + "get new in 0,0->Ip:0.0.0.0\n"},
        {"up", kUp, "0,1 0,0", 1, "screen 0,0 cell 0,0 pointer 700,1080",
         "------up output\n------" + screenChange("0,1", 0, "x:0x0,y:0x0," + one) +
             selected("10.0.0.1", "0.0.0.0") + "get new in 0,0->Ip:0.0.0.0\n"},
        {"a hole, right", kRight, "0,1 0,0", 1, "screen 0,1 cell 0,0 pointer 0,400",
         "------right output------\n"
         "current out location(0,1) out key 65537\nthe mouse in the output boundary\n"
         "start inkey:0\n" +
             selected("10.0.0.3", "0.0.0.0") + "get new in 0,0->Ip:0.0.0.0\n"},
    });
    printedBy([] { osdIpMapSet("10.0.0.2", "in", nullptr); });
    check(
        {{"no cells over there", kRight, "0,0 0,0", 1, "screen 1,0 cell 0,0 pointer 0,400",
          "------right output------\n" + screenChange("0,0", 0x10000, "x:0x1,y:0x0,int x:0, y:0") +
              "start inkey:0\nnot find curIp\nnot get new inIp\n"}});
}

TEST_F(Edge, OuterBorderHoldsThePointerAndReleasesNothing) {
    buildWall({"0,0,10.0.0.1"}, "10.0.0.1");
    XRIGHT = 1280;
    YDOWN = 720;
    check({
        {"left", kLeft, "0,0 0,0", 0, "screen 0,0 cell 0,0 pointer 0,400", "in outmap left MAX\n"},
        {"right", kRight, "0,0 0,0", 0, "screen 0,0 cell 0,0 pointer 1280,400",
         "mouse in max right location\n"},
        {"up", kUp, "0,0 0,0", 1, "screen 0,0 cell 0,0 pointer 700,0", "in outmap UP MAX\n"},
        {"down", kDown, "0,0 0,0", 1, "screen 0,0 cell 0,0 pointer 700,720",
         "in outmap DOWN MAX-->0-->outMax-->1\n"},
    });
    Box box{"127.0.0.31"};
    control(box);
    (events.*kRight)();
    EXPECT_EQ(box.bytes(), "nothing");
}

TEST_F(Edge, OldBoxIsReleasedAndTheNewOneBroughtUpToDate) {
    Box before{"127.0.0.31"};
    Box after{"127.0.0.32"};
    buildWall({"0,0,10.0.0.1#0,0," + before.name() + "#1,0," + after.name()}, "10.0.0.1");
    vi_info.with([](auto& records) { records[32] = {0, AddressText{"127.0.0.32"}, 800, 600}; });
    control(before);
    placePointer(1921, 5);
    const std::string printed = printedBy([this] { (events.*kRight)(); });
    EXPECT_EQ(before.bytes(), "57 ab 04 01 00 80 07 00 00 00");
    EXPECT_EQ(before.bytes(), kKeysUp);
    EXPECT_EQ(before.bytes(), "nothing");
    EXPECT_EQ(after.text(), "link") << "no keyboard, so no lights; the query follows";
    EXPECT_EQ(after.text(), "nothing");
    EXPECT_NE(printed.find("not get act key or not input ip\nsocket read emput\n"
                           "end get input info\nget(0x781,0x5)"),
              std::string::npos)
        << printed;
    EXPECT_EQ(events.queryInProgress, 1);
    // The edge is that of the new box's picture.
    control(after);
    XRIGHT = 4000;
    vi_info.with([](auto& records) { records[31] = {0, AddressText{"127.0.0.31"}, 640, 480}; });
    (events.*kLeft)();
    EXPECT_EQ(place(), "screen 0,0 cell 0,0 pointer 640,5");
}

TEST_F(Edge, OsdIsToldTheNewCellAtTheScreensAddress) {
    std::unique_ptr<Box> osd;
    try {
        osd = std::make_unique<Box>(ownAddress(), wire::kOsdCommandPort);
    } catch (const std::runtime_error& problem) {
        GTEST_SKIP() << problem.what();
    }
    UDPSocket toOsd;
    toOsd.CreateUDPServer(0, 0, false, true);
    KvmSetSocket = &toOsd;
    buildWall({"0,0," + osd->ip + "#2,1,0.0.0.0#1,1,10.0.0.1"}, osd->ip);
    qtFlag = 0;
    standAt("0,0 1,1");
    EXPECT_EQ((events.*kRight)(), 1U);
    EXPECT_EQ(osd->text(), "TO:" + osd->ip + ",2,1") << "also for a cell without an input";
    standAt("0,0 0,0");
    (events.*kDown)();
    EXPECT_EQ(osd->text(), "nothing") << "no notice of a cell that is not there";
    (events.*kLeft)();
    EXPECT_EQ(osd->text(), "nothing") << "nor at the border";
}

}  // namespace
