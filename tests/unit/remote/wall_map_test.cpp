#include <array>
#include <vector>

#include "base/singleton.h"
#include "config/software_config.h"
#include "remote/map_text.h"
#include "remote/wall_edit.h"
#include "unit/remote/remote_state.h"

namespace {

class WallMap : public RemoteState {
 protected:
    WallMap() {
        config->SetConfig(kOutNumIndex, 0);
        for (unsigned n = 0; n < 8; ++n) {
            config->SetConfigChar(kFirstMapIndex + n, "");
        }
    }
    /// The wall as text, one screen a line, its size in front.
    static std::string wall() {
        const auto size = [](auto columns, auto rows) {
            return std::to_string(columns) + "x" + std::to_string(rows);
        };
        const outInf all = outInfo_.copy();
        std::string text = size(all.columns, all.rows);
        for (const auto& [key, screen] : all.screens) {
            text += " | " + mapLine(key, screen) + " " + size(screen.columns, screen.rows);
        }
        return text;
    }
    /// How many screens are saved, and their lines.
    std::string saved() const {
        std::string text;
        for (unsigned n = 0; n < 8; ++n) {
            text += "|" + config->GetConfig(kFirstMapIndex + n);
        }
        return config->GetConfig(kOutNumIndex) + text.substr(0, text.find_last_not_of('|') + 1);
    }
    /// What a map text of that kind prints, and its result.
    static std::string set(const std::string& text, const char* kind, unsigned* key = nullptr) {
        int result = 9;
        const std::string printed = printedBy([&] { result = osdIpMapSet(text, kind, key); });
        return printed + std::to_string(result);
    }

    const std::shared_ptr<SoftwareConfig> config = Singleton<SoftwareConfig>::instance();
};

TEST_F(WallMap, LineBecomesAScreenAndItsCells) {
    EXPECT_EQ(printedBy([] { CreatOutIpMap("1,0,10.0.0.1#2,1,10.0.1.1-8,9000#0,1,10.0.1.2"); }),
              "1\nout:x:1,y:0,outkey:0x10000->ip:10.0.0.1\nget input port 9000\n"
              "get osd data x:2 y:1 ip:10.0.1.1-8\n"
              "outkey-->0x10000(0,0)-->inx:2,iny:1\nin:xmax:3,ymax:2,ip:10.0.1.1-8\n"
              "get osd data x:0 y:1 ip:10.0.1.2\n"
              "outkey-->0x10000(3,2)-->inx:0,iny:1\nin:xmax:3,ymax:2,ip:10.0.1.2\n"
              "get osd data x:0 y:0 ip:0.0.0.0\n"
              "outkey-->0x10000(3,2)-->inx:0,iny:0\nin:xmax:3,ymax:2,ip:0.0.0.0\n");
    // Ports are not written back, cells come column by column.
    const std::string before = "2x1 | 1,0,10.0.0.1#0,0,0.0.0.0#0,1,10.0.1.2#2,1,10.0.1.1-8 3x2";
    EXPECT_EQ(wall(), before);
    EXPECT_EQ(boxInControl().inputPort, 80) << "the entry parsed last decides";
    CreatOutIpMap("1,0,10.9.9.9#0,0,10.9.9.8#0,1,10.9.9.7");
    EXPECT_EQ(wall(), before) << "what is there stays";
    int x = 0;
    int y = 0;
    std::string name;
    std::int32_t port = 0;
    for (const auto& [given, expected] : {std::pair{"1", 1},
                                          {"65535", 65535},
                                          {"0", 80},
                                          {"65536", 80},
                                          {"x", 80},
                                          {"", 80},
                                          {"81,2", 81}}) {
        EXPECT_EQ(spltLocationIp(std::string("3,4,a,") + given, &x, &y, &name, &port), 1);
        EXPECT_EQ(std::tuple(x, y, name, port), std::tuple(3, 4, "a", expected)) << given;
    }
    EXPECT_EQ(boxInControl().inputPort, 80) << "a parse alone sets nothing";
    CreatOutIpMap("9,9,10.0.0.9#0,0,10.0.1.9,9001");
    EXPECT_EQ(boxInControl().inputPort, 80) << "the fixed cell is an entry, too";
    createMap("1,1,10.0.1.9,9001", false, 0x90009);
    EXPECT_EQ(boxInControl().inputPort, 9001);
}

TEST_F(WallMap, UnusableEntriesAreRefusedWithOneLine) {
    const std::string tooLong = "192.168.100.200-1234";  // 20 characters: one too many
    const std::string tooLongLine = "map name over 19 characters:" + tooLong + "\n";
    createMap("0,0,10.0.0.1", true, 0);
    createMap("1,0,10.0.0.2", true, 0);
    const std::string before = wall();
    const std::tuple<std::string, bool, std::string> rows[] = {
        {"", true, "ipmap error\n"},
        {"", false, "ipmap error\n"},
        {"clear", true, "no output ip\n"},
        {"129,200,", true, "no output ip\n"},
        {"129,129,a", true, "xOut location over\n"},
        {"0,129,a", true, "yOut location over\n"},
        {"x,0,a", true, "xOut location over\n"},
        {"99999999999,0,a", true, "xOut location over\n"},
        {"0", true, "no output ip\n"},
        {"5,5," + tooLong, true, tooLongLine},
        {"129,129,a", false, "xIn location over\n"},
        {"0,-1,a", false, "yIn location over\n"},
        {"0,0," + tooLong, false, tooLongLine},
        {"0,0,a", false, "get osd data x:0 y:0 ip:a\nno screen 0x20000 for the cell 0,0\n"}};
    for (const auto& [text, isOut, expected] : rows) {
        unsigned key = 9;
        EXPECT_EQ(printedBy([&, t = text, out = isOut] { key = createMap(t, out, 0x20000); }),
                  expected);
        EXPECT_EQ(key, 0U) << text;
    }
    EXPECT_EQ(CreatOutIpMap("129,0,10.0.0.9#5,5,10.0.0.8"), 1);
    EXPECT_EQ(wall(), before) << "no stray cells on screen 0,0 either";
    EXPECT_EQ(createMap("128,128,10.0.0.3", true, 0), 0x800080U);
    EXPECT_EQ(createMap("128,128,192.168.100.200-123", false, 0x10000), 0x10000U);
    EXPECT_EQ(wall().substr(0, 7), "129x129");
}

TEST_F(WallMap, OutTextReplacesTheWallAndSavesIt) {
    CreatOutIpMap("7,7,10.0.0.7");
    set("0,0,10.0.0.1#1,0,10.0.0.2#0,0,10.0.0.1#1,0,10.0.0.3#", "out");
    EXPECT_EQ(wall(), "2x1 | 0,0,10.0.0.1#0,0,0.0.0.0 1x1 | 1,0,10.0.0.3#0,0,0.0.0.0 1x1");
    EXPECT_EQ(saved(), "2|0,0,10.0.0.1#0,0,0.0.0.0|1,0,10.0.0.3#0,0,0.0.0.0");
    const std::string printed = set("3,0,10.0.0.8#3,0,10.0.0.8#4,0,#5,0,10.0.0.9", "out");
    EXPECT_TRUE(
        printed.ends_with("x:3,y:0-->ip:10.0.0.8\nkey in map and ip same\n"
                          "x:4,y:0-->ip:\noutput ip NULL\n0"))
        << printed;
    EXPECT_EQ(wall(), "4x1 | 3,0,10.0.0.8#0,0,0.0.0.0 1x1");
    EXPECT_EQ(saved()[0], '2') << "a broken wall is not saved";
    EXPECT_EQ(set("0,0,a", "relation"), "set osdIpMap error\n0");
}

TEST_F(WallMap, InTextReplacesTheCellsOfOneScreen) {
    CreatOutIpMap("0,0,10.0.0.1#5,5,10.0.1.1");
    CreatOutIpMap("1,0,10.0.2.2#1,1,10.0.1.2");
    unsigned key = 9;
    EXPECT_TRUE(set("10.0.2#0,1,10.0.1.3#129,0,10.0.1.4", "input", &key)
                    .starts_with("out ip not in map\ninkey-->0x1\n"
                                 "get osd data x:0 y:1 ip:10.0.1.3\n"
                                 "outkey-->0x10000(0,0)-->inx:0,iny:1\n"
                                 "in:xmax:1,ymax:2,ip:10.0.1.3\n"
                                 "inkey-->0x810000\nxIn location over\nset string\n"));
    EXPECT_EQ(key, 0x10000U);
    const std::string first = "0,0,10.0.0.1#0,0,0.0.0.0#5,5,10.0.1.1";
    const std::string after = "2x1 | " + first + " 6x6 | 1,0,10.0.2.2#0,1,10.0.1.3 1x2";
    EXPECT_EQ(wall(), after);
    config->SetConfigChar(kFirstMapIndex, "");
    EXPECT_TRUE(set("10.0.9.9#0,0,10.0.1.9", "in", &key).ends_with('1'));
    EXPECT_EQ(wall(), after);
    EXPECT_EQ(saved(), "2|" + first + "|1,0,10.0.2.2#0,1,10.0.1.3") << "saved all the same";
    EXPECT_EQ(key, 0x10000U);
    EXPECT_TRUE(set("##0,0,10.0.1.9", "in", &key).starts_with("inkey-->0xffffffff\nipmap error\n"));
    EXPECT_EQ(key, 0U) << "the empty name begins the first screen's";
}

TEST_F(WallMap, ShrinkingWallLeavesNoLineBehind) {
    const std::string none = "#0,0,0.0.0.0";
    set("0,0,a#1,0,b#2,0,c#3,0,d#4,0,e", "out");
    set("0,0,a#1,0,b#2,0,c", "out");
    EXPECT_EQ(saved(), "3|0,0,a" + none + "|1,0,b" + none + "|2,0,c" + none);
    set("0,0,a", "out");
    EXPECT_EQ(saved(), "1|0,0,a" + none) << "shrinking twice, neither";
    set("", "out");
    EXPECT_EQ(wall() + saved(), "0x00");
}

TEST_F(WallMap, StatusQueryNamesTheBoxAndMaybeAnAddress) {
    const std::tuple<const char*, int, const char*, const char*, int> rows[] = {
        {"[seq]\nip=1.2.3.4\nto=10.0.0.1:5000", 0, "old", "old", 7},
        {"[seq]\nip=1.2.3.4\nto=10.0.0.100:50000\nx", 1, "1.2.3.4", "10.0.0.100", 50000},
        {"[seq]\nip=1.2.3.4\nto=10.0.0.10:50000\nx", 1, "1.2.3.4", "old", 7},  // 18 characters
        {"[seq]\n1.2.3.4=5\nno_colon=10.0.0.10\nx", 1, "5", "old", 7},
        {"[seq]\n1.2.3.4\nno_colon=100.100.100.1\nx", 1, "1.2.3.4", "100.100.100.1", -1},
        {"[seq]\na=b=c\nto=10.0.0.10:123456x\nx", 1, "b=c", "10.0.0.10", 123456},
        {"[seq]\nip=1234567890123456789012345\nto=1234567890123456789012:1\nx", 1,
         "1234567890123456789", "1234567890123456789", 1}};
    for (const auto& [text, result, expectedIp, expectedAddress, expectedPort] : rows) {
        char ip[20] = "old";
        char address[20] = "old";
        int port = 7;
        EXPECT_EQ(get_seq_ip(text, ip, address, &port), result) << text;
        EXPECT_STREQ(ip, expectedIp) << text;
        EXPECT_STREQ(address, expectedAddress) << text;
        EXPECT_EQ(port, expectedPort) << text;
    }
}

}  // namespace
