#include "control/command_channel.h"

#include "base/singleton.h"
#include "config/software_config.h"
#include "control/hotkey_table.h"
#include "unit/remote/board.h"

namespace {

/// What the plain commands do is played from outside.
class Commands : public Board {
 protected:
    Commands() {
        localip.set(AddressText{"10.0.0.1"});
        buildWall({"0,0,10.0.0.1#0,0,127.9.0.1", "1,0,10.0.0.2#0,0,127.9.0.2"}, "10.0.0.1");
    }
    std::string order(const std::string& text) {
        return printedBy([&] { channel.handle(text); });
    }
    CommandChannel channel{events};
    Box box{"127.0.0.31"};
};

TEST_F(Commands, WhatNoRowMatchesIsReportedAndDropped) {
    for (const std::string text :
         {"OSDQUIT ", "OSDSTARTX", "KVMQUIT\n", "PREVIEWQUI", "osdquit", "", " PAUSE", "MT",
          "relation", "relations", "details", "hotkey", "[se]", "%s%n"}) {
        EXPECT_EQ(order(text), "recv error osd command:" + text + "\n");
    }
}

TEST_F(Commands, OnlyTheLastRelationIsNotTakenAgain) {
    placePointer(9, 9);
    osdFlag = 1;
    startFlag = 0;
    const std::string text = "relation&0,0,10.0.0.5#1,0,10.0.0.1";
    EXPECT_NE(order(text), "");
    EXPECT_EQ(place(), "screen 1,0 cell 0,0 pointer 0,0");
    EXPECT_EQ(startFlag, 1) << "the OSD is open";
    EXPECT_EQ(order(text), "");
    EXPECT_EQ(order("relation&0,0,0"), "stop kvm\n");
    EXPECT_EQ(curIp.copy(), AddressText("0.0.0.0"));
    EXPECT_EQ(curName.copy(), AddressText("0.0.0.0"));
    EXPECT_EQ(outInfo_.copy().screens.size(), 2U);
    osdFlag = 0;
    EXPECT_NE(order(text), "") << "no longer the last one";
    EXPECT_EQ(startFlag, 0);
}

TEST_F(Commands, DetailsSelectTheConsolesOwnScreenAgain) {
    startFlag = events.hotPlugFlag = 0;
    placePointer(30, 40);
    order("details&10.0.0.1#0,0," + box.name());
    EXPECT_EQ(box.all(), "57 ab 04 01 00 1e 00 28 00 00") << "the pointer as it stands";
    order("details&10.0.0.1#0,0," + box.name() + "#1,0,127.9.0.250#1,1,127.9.0.251");
    EXPECT_EQ(box.all(), "57 ab 04 01 00 00 00 00 00 00") << "more than 48 characters";
    osdFlag = 1;
    EXPECT_NE(order("details&10.0.0.2#0,0,127.9.0.8").find("detail get curIp=127.0.0.31\n"),
              std::string::npos)
        << "while the OSD is open, for any output box";
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
        events.touchInputIp.set(AddressText{"old"});
        int result = 9;
        const std::string lines = printedBy([&, t = text] { result = getTouchIp(events, t); });
        EXPECT_EQ(lines + std::to_string(result), printed) << text;
        EXPECT_EQ(events.touchInputIp.copy().view(), touch) << text;
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
    events.mouseDevices.count = 1;
    events.keyDevices.count = 2;
    Box named{"127.0.0.131"};
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
