#include "control/command_channel.h"

#include <vector>

#include "app/base/singleton.h"
#include "config/software_config.h"
#include "control/hotkey_table.h"
#include "remote/wire.h"
#include "unit/remote/board.h"

namespace {

class Commands : public Board {
 protected:
    Commands() {
        localip.set(AddressText{"10.0.0.1"});
        buildWall({"0,0,10.0.0.1#0,0,127.9.0.1", "1,0,10.0.0.2#0,0,127.9.0.2"}, "10.0.0.1");
    }
    /// What the command prints, without the settings' own lines.
    std::string order(const std::string& text) {
        return printedBy([&] { channel.handle(text); });
    }
    static bool holds(const std::string& text, const std::string& part) {
        return text.find(part) != std::string::npos;
    }
    CommandChannel channel{events};
};

TEST_F(Commands, FlagsAreSetByTheirWords) {
    Box box{"127.0.0.31"};
    control(box);
    events.previewMode = 1;
    events.kvmMode = 1;
    EXPECT_EQ(order("OSDSTART"), "osdSet OSDSTART\n");
    EXPECT_EQ(box.bytes(), "57 ab 01 00 00 00 00 00 00 00 00");
    EXPECT_EQ(osdFlag + 10 * clear_flag, 1);
    EXPECT_EQ(order("OSDQUIT"), "OSD QUIT\n");
    EXPECT_EQ(osdFlag + 10 * clear_flag, 10);
    EXPECT_EQ(order("PREVIEWQUIT"), "preview quit\n");
    EXPECT_EQ(events.previewMode + 10 * events.kvmMode, 10);
    EXPECT_EQ(order("KVMQUIT"), "kvm quit\n");
    EXPECT_EQ(events.kvmMode, 0);
    is_user_ip = 1;
    EXPECT_EQ(order("PAUSE, please"), "---osd pause---\n");
    EXPECT_EQ(events.touchPaused, 1);
    EXPECT_EQ(box.bytes(), "57 ab 04 01 00 00 00 00 00 00");
    EXPECT_EQ(box.bytes(), "57 ab 01 00 00 00 00 00 00 00 00");
    EXPECT_EQ(order("CONTINUED"), "");
    EXPECT_EQ(events.touchPaused, 0);
}

TEST_F(Commands, WhatNoRowMatchesIsReportedAndDropped) {
    osdFlag = 1;
    const std::string wall = std::to_string(outInfo_.copy().screens.size()) + place();
    for (const std::string text :
         {"OSDQUIT ", "OSDSTARTX", "KVMQUIT\n", "PREVIEWQUI", "osdquit", "", " PAUSE", "MT",
          "relation", "relations", "details", "hotkey", "[se]", "%s%n"}) {
        EXPECT_EQ(order(text), "recv error osd command:" + text + "\n");
    }
    order("relation&" + std::string(2000, '#'));
    order("details&" + std::string(2000, ','));
    order("hotkey&" + std::string(2000, 'x'));
    order("[seq]" + std::string(2000, '\n') + "usb_link_device");
    EXPECT_EQ(osdFlag, 1);
}

TEST_F(Commands, RelationReplacesTheWallOnce) {
    placePointer(9, 9);
    curIp.set(AddressText{"127.9.0.1"});
    osdFlag = 1;
    startFlag = 0;
    const std::string text = "relation&0,0,10.0.0.5#1,0,10.0.0.1";
    const std::string printed = order(text);
    EXPECT_TRUE(printed.starts_with("x:0,y:0-->ip:10.0.0.5\n")) << printed;
    EXPECT_TRUE(
        printed.ends_with("not find outIp:10.0.0.1 in map\n"
                          "name:10.0.0.1 ip:10.0.0.1\n"
                          "this is a singal screen\n"))
        << printed;
    EXPECT_EQ(place(), "screen 1,0 cell 0,0 pointer 0,0");
    EXPECT_EQ(startFlag, 1) << "the OSD is open";
    EXPECT_EQ(order(text), "");
    EXPECT_EQ(order("relation&0,0,0"), "stop kvm\n");
    EXPECT_EQ(curIp.copy().view(), "0.0.0.0");
    EXPECT_EQ(curName.copy().view(), "0.0.0.0");
    EXPECT_EQ(outInfo_.copy().screens.size(), 2U);
    osdFlag = 0;
    EXPECT_NE(order(text), "") << "no longer the last one";
    EXPECT_EQ(startFlag, 0);
}

TEST_F(Commands, DetailsSelectTheConsolesOwnScreenAgain) {
    Box box{"127.0.0.31"};
    startFlag = 0;
    placePointer(30, 40);
    events.hotPlugFlag = 0;
    EXPECT_TRUE(
        holds(order("details&10.0.0.2#0,0,127.9.0.9"),
              "get osd outIp:10.0.0.2#0,0,127.9.0.9\ncurOutIp:10.0.0.1,osdGetIp:10.0.0.2\n"));
    EXPECT_EQ(curIp.copy().view(), "") << "meant for another output box";
    EXPECT_EQ(events.hotPlugFlag, 1);
    EXPECT_EQ(outInfo_.copy().screens.at(0x10000).cells.at(0).name.view(), "127.9.0.9");

    const std::string printed = order("details&10.0.0.1#0,0," + box.name());
    EXPECT_TRUE(holds(printed, "get main touchIp=" + box.name() + "\n")) << printed;
    EXPECT_TRUE(printed.ends_with("end cp\nname:10.0.0.1 ip:10.0.0.1\nname:" + box.name() +
                                  " ip:127.0.0.31\n"
                                  "kvmset outIp:10.0.0.1 detail get curIp=127.0.0.31\n"
                                  "get current ip-->127.0.0.31\n"))
        << printed;
    EXPECT_EQ(box.bytes(), "57 ab 04 01 00 1e 00 28 00 00") << "the pointer as it stands";
    EXPECT_EQ(events.touchInputIp.copy().view(), box.name());
    order("details&10.0.0.1#0,0," + box.name() + "#1,0,127.9.0.250#1,1,127.9.0.251");
    EXPECT_EQ(box.bytes(), "57 ab 04 01 00 00 00 00 00 00");
    EXPECT_EQ(place(), "screen 0,0 cell 0,0 pointer 0,0") << "more than 48 characters";
    osdFlag = 1;
    EXPECT_TRUE(holds(order("details&10.0.0.2#0,0,127.9.0.8"), "detail get curIp=127.0.0.31\n"))
        << "while the OSD is open, for any output box";
}

TEST_F(Commands, DetailsAfterARelationSelectTheConsolesScreen) {
    Box box{"127.0.0.31"};
    startFlag = 1;
    curName.set(AddressText{"old"});
    const std::string printed = order("details&10.0.0.1#0,0," + box.name());
    EXPECT_TRUE(printed.ends_with(
        "this is a singal screen\nname:10.0.0.1 ip:10.0.0.1\nname:" + box.name() +
        " ip:127.0.0.31\nkvmset get curName=" + box.name() + " curIp=127.0.0.31\n"))
        << printed;
    EXPECT_EQ(box.bytes(), "57 ab 04 01 00 00 00 00 00 00");
    EXPECT_EQ(startFlag, 0);
}

TEST_F(Commands, TouchAddressIsTakenFromASingleEntry) {
    struct Row {
        std::string text;
        int result;
        std::string printed, touch;
    };
    const std::string at48 = "details&10.0.0.1#0,0,127.9.0.1#" + std::string(17, 'x');
    for (const Row& row : std::vector<Row>{
             {"details&10.0.0.1#0,0,127.9.0.1", 1, "get main touchIp=127.9.0.1\n", "127.9.0.1"},
             {"details&10.0#0,0,127.9.0.1-5#1,0,a", 1, "get main touchIp=127.9.0.1-5\n",
              "127.9.0.1-5"},
             {at48, 1, "get main touchIp=127.9.0.1\n", "127.9.0.1"},
             {at48 + "x", 0, "not signal \n", "0.0.0.0"},
             {"details&10.0.0.12#0,0,127.9.0.1", 0, "not touch local ip\n", "old"},
             {"details&10.0.0.1#1,0,127.9.0.1", 0, "not get 0,0 input ip\n", "old"},
             {"details&10.0.0.1", 0, "not get 0,0 input ip\n", "old"},
             {"details&#0,0,127.9.0.1", 1, "get main touchIp=127.9.0.1\n", "127.9.0.1"},
             {"&10.0.0.1#0,0,", 1, "get main touchIp=\n", ""}}) {
        SCOPED_TRACE(row.text);
        events.touchInputIp.set(AddressText{"old"});
        EXPECT_EQ(printedBy([&] { EXPECT_EQ(getTouchIp(events, row.text), row.result); }),
                  row.printed);
        EXPECT_EQ(events.touchInputIp.copy().view(), row.touch);
    }
}

TEST_F(Commands, MouseGoesWhereTheNumbersSay) {
    struct Row {
        const char* text;
        int x, y;
    };
    int x = 0;
    int y = 0;
    for (const Row& row :
         {Row{"MTO:3,4", 3, 4}, Row{"MTO: -5,\t+6", -5, 6}, Row{"MTO:7", 7, 6},
          Row{"MTO:8 ,9", 8, 6}, Row{"MTO:a,9", 8, 6}, Row{"MTO3,4", 8, 6}, Row{"MTO:1,z", 1, 6},
          Row{"MTO:99999999999,2", 1, 6}, Row{"MTO:+-2,2", 1, 6}, Row{"MTO:2,3junk", 2, 3}}) {
        parseMouseTo(row.text, x, y);
        EXPECT_EQ(x, row.x) << row.text;
        EXPECT_EQ(y, row.y) << row.text;
    }
    listAsUserBox("127.9.0.2");
    order("MTO:1,0");
    EXPECT_EQ(place(), "screen 1,0 cell 0,0 pointer 100,100");
    EXPECT_EQ(order("MTO:2,0"), "mouset to location error->(2,0)\nmouse to error\n");
    EXPECT_EQ(order("MTO:"), "mouset to location error->(2,0)\nmouse to error\n")
        << "the numbers of the command before";
}

TEST_F(Commands, HotkeyListIsTakenOver) {
    order("hotkey&ctrl+f1#alt+2");
    EXPECT_EQ(Singleton<SoftwareConfig>::instance()->GetConfig(kHotkeyMapIndex),
              "LEFTCTRL+F1#LEFTALT+2#");
    EXPECT_TRUE(findHotkey("LEFTALT+2").found);
    order("hotkey&");
    EXPECT_FALSE(findHotkey("LEFTALT+2").found);
}

TEST_F(Commands, StatusIsToldOnlyToWhoAsksThisConsole) {
    UDPSocket channelSocket;
    const int fd = channelSocket.CreateUDPServer(0, 0, true, false);
    KvmSetSocket = &channelSocket;
    sockaddr_in own{};
    socklen_t size = sizeof own;
    ASSERT_EQ(getsockname(fd, reinterpret_cast<sockaddr*>(&own), &size), 0);
    UDPSocket asking;
    asking.CreateUDPServer(0, 0, true, false);
    asking.SendTo("127.0.0.1", ntohs(own.sin_port), "q", 1);
    std::array<char, 128> text{};
    ASSERT_EQ(channelSocket.RecvFrom(text.data(), 128), 1);
    Box named{"127.0.0.131"};

    events.mouseDevices.count = 1;
    events.keyDevices.count = 2;
    std::string answer = "[ack]\n[controlled]=10.0.0.1\nusb_link_device=120";
    answer.resize(64);
    order("[seq]\nip=10.0.0.1\nto\nusb_link_device");
    ASSERT_EQ(asking.RecvFrom(text.data(), 128), 64);
    EXPECT_EQ(std::string(text.data(), 64), answer);
    const std::string target = "to=127.0.0.131:" + std::to_string(named.port);
    order("[seq]\nip=10.0.0.1\n" + target + "\nusb_link_device");
    EXPECT_EQ(named.text(), answer);
    for (const std::string& query : std::vector<std::string>{
             "[seq]\nip=10.0.0.2\n" + target + "\nusb_link_device",
             "[seq]\nip=10.0.0.1\n" + target + "\nusb_link", "[seq]\nip=10.0.0.1\nusb_link_device",
             "[seq]\nip=10.0.0.1\nto=127.0.0.131:70000\nusb_link_device"}) {
        order(query);
        EXPECT_EQ(named.text(), "nothing") << query;
    }
    EXPECT_EQ(asking.RecvFrom(text.data(), 128), 0);
}

}  // namespace
