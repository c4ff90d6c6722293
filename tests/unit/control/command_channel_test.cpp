#include "control/command_channel.h"

#include "base/singleton.h"
#include "config/software_config.h"
#include "control/hotkey_table.h"
#include "control/mouse_to.h"
#include "remote/edge_crossing.h"
#include "remote/lights.h"
#include "remote/reports.h"
#include "remote/selection.h"
#include "unit/remote/between.h"
#include "unit/remote/remote_state.h"

namespace {

/// What the plain commands do is played from outside.
class Commands : public RemoteState {
 protected:
    Commands() {
        localip.set(AddressText{"10.0.0.1"});
        buildWall({"0,0,10.0.0.1#0,0,127.9.0.1", "1,0,10.0.0.2#0,0,127.9.0.2"}, "10.0.0.1");
    }
    std::string order(const std::string& text) {
        return printedBy([&] { channel.handle(text); });
    }
    DeviceCounts counts;
    CommandChannel channel{console, counts};
    Receiver box{"127.0.0.31"};
};

TEST_F(Commands, WhatNoRowMatchesIsReportedAndDropped) {
    for (const std::string text : {"OSDQUIT ", "OSDSTARTX", "KVMQUIT\n", "PREVIEWQUI", "osdquit",
                                   "", " PAUSE", "relation", "details", "hotkey", "[se]", "%s%n"}) {
        EXPECT_EQ(order(text), "recv error osd command:" + text + "\n");
    }
}

TEST_F(Commands, AModeCommandChangesItsOwnModeOnly) {
    Modes& modes = console.modes;
    for (const auto& [text, line, left] : {std::tuple{"OSDQUIT", "OSD QUIT\n", 6},
                                           {"PREVIEWQUIT", "preview quit\n", 5},
                                           {"KVMQUIT", "kvm quit\n", 3}}) {
        modes.osdFlag = modes.previewMode = modes.kvmMode = 1;
        EXPECT_EQ(order(text), line);
        EXPECT_EQ(modes.osdFlag + 2 * modes.previewMode + 4 * modes.kvmMode, left);
    }
}

TEST_F(Commands, OnlyTheLastRelationIsNotTakenAgain) {
    placePointer(9, 9);
    console.modes.osdFlag = 1;
    startFlag = 0;
    const std::string text = "relation&0,0,10.0.0.5#1,0,10.0.0.1";
    EXPECT_NE(order(text), "");
    EXPECT_EQ(place(), "screen 1,0 cell 0,0 pointer 0,0");
    EXPECT_EQ(startFlag, 1) << "the OSD is open";
    EXPECT_EQ(order(text), "");
    EXPECT_EQ(order("relation&0,0,0"), "stop kvm\n");
    EXPECT_EQ(boxInControl().curIp, AddressText("0.0.0.0"));
    EXPECT_EQ(boxInControl().curName, AddressText("0.0.0.0"));
    EXPECT_EQ(outInfo_.copy().screens.size(), 2U);
    console.modes.osdFlag = 0;
    EXPECT_NE(order(text), "") << "no longer the last one";
    EXPECT_EQ(startFlag, 0);
}

TEST_F(Commands, DetailsSelectTheConsolesOwnScreenAgain) {
    startFlag = console.duties.hotPlugFlag = 0;
    placePointer(30, 40);
    order("details&10.0.0.1#0,0," + box.name());
    EXPECT_EQ(box.all(), "57 ab 04 01 00 1e 00 28 00 00") << "the pointer as it stands";
    order("details&10.0.0.1#0,0," + box.name() + "#1,0,127.9.0.250#1,1,127.9.0.251");
    EXPECT_EQ(box.all(), "57 ab 04 01 00 00 00 00 00 00") << "more than 48 characters";
    console.modes.osdFlag = 1;
    EXPECT_NE(order("details&10.0.0.2#0,0,127.9.0.8").find("detail get curIp=127.0.0.31\n"),
              std::string::npos)
        << "while the OSD is open, for any output box";
}

TEST_F(Commands, AModeIsSetBeforeItsWordsAndWhatIsDownIsLetGo) {
    control(box);
    const auto pressA = [&] {
        sendReport(BoxReport::keys(wire::keyboard(0, 0x04)), console.motion);
        box.all();
    };
    pressA();
    beforeSend = [&](int, std::string_view) { EXPECT_EQ(console.modes.osdFlag, 1); };
    order("OSDSTART");
    beforeSend = nullptr;
    EXPECT_EQ(box.all(), kKeysUp);
    pressA();
    order("relation&0,0,0");
    EXPECT_EQ(box.all(), kKeysUp);
    order("OSDSTART");
    EXPECT_EQ(box.all(), "") << "no box";
    control(box);
    sendReport(BoxReport::pointer(wire::absolute(wire::kLeft, 0, 0, 0)), console.motion);
    box.all();
    order("OSDSTART");
    EXPECT_EQ(box.all(), kKeysUp + std::string(" | 57 ab 04 01 00 00 00 00 00 00"))
        << "its release goes to the OSD";
}

/// A moving mouse at every step of "details": it looks whether lights and picture are due.
TEST_F(Commands, AfterDetailsTheNewBoxIsBroughtUpToDateOrDueForIt) {
    const Receiver old{"127.0.0.32"};
    for (const bool awaitsTheFirst : {false, true}) {
        bool more = true;
        int moment = 0;
        for (; more; ++moment) {
            startFlag = 0;
            order("details&10.0.0.1#0,0," + old.name());
            startFlag = awaitsTheFirst;
            console.duties.hotPlugFlag = 0;
            box.all();
            printedBy([&] {
                more = interrupted(
                    moment, [&] { channel.handle("details&10.0.0.1#0,0," + box.name()); },
                    [&] {
                        if (resyncIsDue(console, boxInControl())) {
                            resync(console);
                        }
                    });
            });
            EXPECT_TRUE(console.duties.hotPlugFlag ||
                        box.all().find("6c 69 6e 6b") != std::string::npos)
                << "step " << moment;
        }
        EXPECT_GT(moment, 20);
    }
}

/// "details" at every step of a selection and of a crossing: who has control is what the cell
/// shows.
TEST_F(Commands, ControlIsWithTheBoxThatTheCellShowsNow) {
    startFlag = 0;
    const std::function<void()> ways[] = {[] { GetCurInip(kCellInUse, nullptr); },
                                          [&] { cross(console, Direction::kRight); }};
    const auto shown = [] {
        const auto names = currentInfo.with([](const currentCtl& now) { return now.screen.cells; });
        const auto cell = names.find(currentInKey());
        return cell == names.end() ? AddressText{} : cell->second.name;
    };
    for (const auto& way : ways) {
        bool more = true;
        int moment = 0;
        for (; more; ++moment) {
            buildWall({"0,0,10.0.0.1#0,0,127.9.0.1#1,0,127.9.0.3", "1,0,10.0.0.2#0,0,127.9.0.2"},
                      "10.0.0.1");
            order("details&10.0.0.1#0,0,127.9.0.1#1,0,127.9.0.3");
            printedBy([&] {
                more = interrupted(moment, way,
                                   [&] { channel.handle("details&10.0.0.1#0,0,127.9.0.8"); });
            });
            EXPECT_EQ(boxInControl().curName, shown()) << "step " << moment;
            EXPECT_FALSE(boxInControl().isNone()) << "step " << moment;
        }
        EXPECT_GT(moment, 3);
    }
}

/// The cells of a new wall at every step of a crossing that began when it had none.
TEST_F(Commands, ACrossingEntersTheScreenThatTheWallHasNow) {
    startFlag = 0;
    bool more = true;
    int moment = 0;
    for (; more; ++moment) {
        buildWall({"0,0,10.0.0.1#0,0,127.9.0.1", "1,0,10.0.0.2#0,0,127.9.0.2"}, "10.0.0.1");
        printedBy([&] {
            osdIpMapSet("0,0,10.0.0.1#1,0,10.0.0.2", "out", nullptr);
            more = interrupted(
                moment, [&] { cross(console, Direction::kRight); },
                [&] {
                    channel.handle("details&10.0.0.1#0,0,127.9.0.1");
                    channel.handle("details&10.0.0.2#0,0,127.9.0.2");
                    channel.handle("MTO:0,0");
                });
        });
        EXPECT_TRUE(!more || !boxInControl().isNone()) << "step " << moment;
    }
    EXPECT_GT(moment, 3);
}

TEST_F(Commands, TouchAddressIsTakenFromASingleEntry) {
    const std::string at48 = "details&10.0.0.1#0,0,127.9.0.1#" + std::string(17, 'x');
    const std::tuple<std::string, const char*, const char*> rows[] = {
        {"details&10.0.0.1#0,0,127.9.0.1", "get main touchIp=127.9.0.1\n1", "127.9.0.1"},
        {"details&10.0#0,0,127.9.0.1-5#1,0,a", "get main touchIp=127.9.0.1-5\n1", "127.9.0.1-5"},
        {at48, "get main touchIp=127.9.0.1\n1", "127.9.0.1"},
        {at48 + "x", "not signal \n0", "0.0.0.0"},
        {"details&10.0.0.12#0,0,127.9.0.1", "not touch local ip\n0", "old"},
        {"details&10.0.0.1#1,0,127.9.0.1", "not get 0,0 input ip\n0", "old"},
        {"details&10.0.0.1", "not get 0,0 input ip\n0", "old"},
        {"details&#0,0,127.9.0.1", "get main touchIp=127.9.0.1\n1", "127.9.0.1"},
        {"&10.0.0.1#0,0,", "get main touchIp=\n1", ""}};
    for (const auto& [text, printed, touch] : rows) {
        console.touchInputIp.set(AddressText{"old"});
        int result = 9;
        const std::string lines =
            printedBy([&, t = text] { result = getTouchIp(console.touchInputIp, t); });
        EXPECT_EQ(lines + std::to_string(result), printed) << text;
        EXPECT_EQ(console.touchInputIp.copy().view(), touch) << text;
    }
}

TEST_F(Commands, MouseGoesWhereTheNumbersSay) {
    int x = 0;
    int y = 0;
    const std::tuple<const char*, int, int> rows[] = {
        {"MTO:3,4", 3, 4},     {"MTO: -5,\t+6", -5, 6},    {"MTO:7", 7, 6},   {"MTO:8 ,9", 8, 6},
        {"MTO:a,9", 8, 6},     {"MTO3,4", 8, 6},           {"MTO:1,z", 1, 6}, {"MTO:+-2,2", 1, 6},
        {"MTO:2,3junk", 2, 3}, {"MTO:99999999999,2", 2, 3}};
    for (const auto& [text, expectedX, expectedY] : rows) {
        parseMouseTo(text, x, y);
        EXPECT_EQ(std::pair(x, y), std::pair(expectedX, expectedY)) << text;
    }
}

TEST_F(Commands, StatusIsToldAtTheAddressThatTheQueryNames) {
    KvmSetSocket = &toBoxes;
    counts.mice = 1;
    counts.keyboards = 2;
    Receiver named{"127.0.0.131"};
    const std::string to = "\nto=127.0.0.131:" + std::to_string(named.port);
    order("[seq]\nip=10.0.0.2" + to + "\nusb_link_device");
    order("[seq]\nip=10.0.0.1\nto=127.0.0.131:70000\nusb_link_device");
    EXPECT_EQ(named.text(), "nothing");
    order("[seq]\nip=10.0.0.1" + to + "\nusb_link_device");
    std::string answer = "[ack]\n[controlled]=10.0.0.1\nusb_link_device=120";
    answer.resize(64);
    EXPECT_EQ(named.text(), answer);
}

}  // namespace
