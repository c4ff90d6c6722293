#include "remote/wall_map.h"

#include <array>
#include <vector>

#include "app/base/singleton.h"
#include "config/software_config.h"
#include "remote/map_text.h"
#include "unit/remote/board.h"

namespace {

class WallMap : public Board {
 protected:
    WallMap() : config(Singleton<SoftwareConfig>::instance()) {
        printedBy([this] {
            config->SetConfig(kOutNumIndex, 0);
            for (unsigned n = 0; n < 8; ++n) {
                config->SetConfigChar(kFirstMapIndex + n, "");
            }
        });
    }
    /// The wall as text, one screen a line, its size in front.
    static std::string wall() {
        const outInf all = outInfo_.copy();
        std::string text = std::to_string(all.columns) + "x" + std::to_string(all.rows);
        for (const auto& [key, screen] : all.screens) {
            text += " | " + mapLine(key, screen) + " " + std::to_string(screen.columns) + "x" +
                    std::to_string(screen.rows);
        }
        return text;
    }
    std::string saved(unsigned n) const { return config->GetConfig(kFirstMapIndex + n); }

    std::shared_ptr<SoftwareConfig> config;
};

TEST(MapText, FieldsAreReadOneByOne) {
    struct Row {
        const char* text;
        int x, y;
        const char* name;
        std::optional<std::string> port;
    };
    for (const Row& row :
         {Row{"3,4,10.0.0.1-2", 3, 4, "10.0.0.1-2", std::nullopt},
          Row{"3,4,10.0.0.1,9000", 3, 4, "10.0.0.1", "9000"}, Row{"0,0,a,1,2", 0, 0, "a", "1"},
          Row{"0,0,a,", 0, 0, "a", ""}, Row{"x,-7,a", -1, -7, "a", std::nullopt},
          Row{"5", 5, -1, "", std::nullopt}, Row{"", -1, -1, "", std::nullopt},
          Row{"99999999999,1,a", 2147483647, 1, "a", {}}}) {
        SCOPED_TRACE(row.text);
        const MapEntry entry = parseMapEntry(row.text);
        EXPECT_EQ(entry.x, row.x);
        EXPECT_EQ(entry.y, row.y);
        EXPECT_EQ(entry.name, row.name);
        EXPECT_EQ(entry.port, row.port);
    }
    EXPECT_EQ(mapEntries("a#b#"), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(mapEntries("a##b"), (std::vector<std::string>{"a", "", "b"}));
    EXPECT_TRUE(mapEntries("").empty());
}

TEST_F(WallMap, LineBecomesAScreenAndItsCells) {
    EXPECT_EQ(printedBy([] { CreatOutIpMap("1,0,10.0.0.1#2,1,10.0.1.1-8,9000#0,1,10.0.1.2"); }),
              "1\n"
              "out:x:1,y:0,outkey:0x10000->ip:10.0.0.1\n"
              "get input port 9000\n"
              "get osd data x:2 y:1 ip:10.0.1.1-8\n"
              "outkey-->0x10000(0,0)-->inx:2,iny:1\n"
              "in:xmax:3,ymax:2,ip:10.0.1.1-8\n"
              "get osd data x:0 y:1 ip:10.0.1.2\n"
              "outkey-->0x10000(3,2)-->inx:0,iny:1\n"
              "in:xmax:3,ymax:2,ip:10.0.1.2\n"
              "get osd data x:0 y:0 ip:0.0.0.0\n"
              "outkey-->0x10000(3,2)-->inx:0,iny:0\n"
              "in:xmax:3,ymax:2,ip:0.0.0.0\n");
    // Ports are not written back, cells come column by column.
    EXPECT_EQ(wall(), "2x1 | 1,0,10.0.0.1#0,0,0.0.0.0#0,1,10.0.1.2#2,1,10.0.1.1-8 3x2");
    EXPECT_EQ(inputPort, 80) << "the entry parsed last decides";
    const std::string before = wall();
    CreatOutIpMap("1,0,10.9.9.9#0,0,10.9.9.8#0,1,10.9.9.7");
    EXPECT_EQ(wall(), before) << "what is there stays";
}

TEST_F(WallMap, UnusableEntriesAreRefusedWithOneLine) {
    const std::string tooLong = "192.168.100.200-1234";  // 20 characters: one too many
    const std::string tooLongLine = "map name over 19 characters:" + tooLong + "\n";
    struct Row {
        std::string text;
        bool isOut;
        std::string printed;
    };
    createMap("0,0,10.0.0.1", true, 0);
    createMap("1,0,10.0.0.2", true, 0);
    const std::string before = wall();
    for (const Row& row : std::vector<Row>{
             {"", true, "ipmap error\n"},
             {"", false, "ipmap error\n"},
             {"clear", true, "no output ip\n"},
             {"129,200,", true, "no output ip\n"},
             {"129,129,a", true, "xOut location over\n"},
             {"0,129,a", true, "yOut location over\n"},
             {"x,0,a", true, "xOut location over\n"},
             {"5,5," + tooLong, true, tooLongLine},
             {"129,129,a", false, "xIn location over\n"},
             {"0,-1,a", false, "yIn location over\n"},
             {"0,0," + tooLong, false, tooLongLine},
             {"0,0,a", false, "get osd data x:0 y:0 ip:a\nno screen 0x20000 for the cell 0,0\n"}}) {
        EXPECT_EQ(printedBy([&] { EXPECT_EQ(createMap(row.text, row.isOut, 0x20000), 0U); }),
                  row.printed);
    }
    EXPECT_EQ(CreatOutIpMap("129,0,10.0.0.9#5,5,10.0.0.8"), 1);
    EXPECT_EQ(wall(), before) << "no stray cells on screen 0,0 either";
    EXPECT_EQ(createMap("128,128,10.0.0.3", true, 0), 0x800080U);
    EXPECT_EQ(createMap("128,128,192.168.100.200-123", false, 0x10000), 0x10000U);
    EXPECT_EQ(wall().substr(0, 7), "129x129");
}

TEST_F(WallMap, PortFieldIsTakenOnlyWhenItIsOne) {
    for (const auto& [text, port] : {std::pair{"0,0,a,1", 1},
                                     {"0,0,a,65535", 65535},
                                     {"0,0,a,0", 80},
                                     {"0,0,a,65536", 80},
                                     {"0,0,a,x", 80}}) {
        int x = 0;
        int y = 0;
        std::string name;
        EXPECT_EQ(spltLocationIp(text, &x, &y, &name), 1);
        EXPECT_EQ(inputPort, port) << text;
    }
}

TEST_F(WallMap, OutTextReplacesTheWallAndSavesIt) {
    CreatOutIpMap("7,7,10.0.0.7");
    std::string printed = printedBy([] {
        EXPECT_EQ(
            osdIpMapSet("0,0,10.0.0.1#1,0,10.0.0.2#0,0,10.0.0.1#1,0,10.0.0.3#", "out", nullptr), 1);
    });
    EXPECT_EQ(wall(), "2x1 | 0,0,10.0.0.1#0,0,0.0.0.0 1x1 | 1,0,10.0.0.3#0,0,0.0.0.0 1x1");
    EXPECT_TRUE(printed.starts_with("x:0,y:0-->ip:10.0.0.1\n10.0.0.1 no key in map\n1\nout:"))
        << printed;
    EXPECT_NE(printed.find("x:0,y:0-->ip:10.0.0.1\nkey in map and ip same\nx:1,y:0-->ip:10.0.0.3\n"
                           "set string\n"),
              std::string::npos)
        << printed;
    EXPECT_EQ(saved(0), "0,0,10.0.0.1#0,0,0.0.0.0");
    EXPECT_EQ(config->GetConfig(kOutNumIndex), "2");
    EXPECT_NE(scratchSettings()
                  .get("data/tav_rik.ini")
                  .find("\nkOutNum=2\nkOutIpmap0=0,0,10.0.0.1#0,0,0.0.0.0\n"),
              std::string::npos);

    printed = printedBy(
        [] { EXPECT_EQ(osdIpMapSet("3,0,10.0.0.8#4,0,#5,0,10.0.0.9", "out", nullptr), 0); });
    EXPECT_TRUE(printed.ends_with("x:4,y:0-->ip:\noutput ip NULL\n")) << printed;
    EXPECT_EQ(wall(), "4x1 | 3,0,10.0.0.8#0,0,0.0.0.0 1x1");
    EXPECT_EQ(config->GetConfig(kOutNumIndex), "2") << "a broken wall is not saved";
    EXPECT_EQ(printedBy([] { EXPECT_EQ(osdIpMapSet("0,0,a", "relation", nullptr), 0); }),
              "set osdIpMap error\n");
}

TEST_F(WallMap, InTextReplacesTheCellsOfOneScreen) {
    CreatOutIpMap("0,0,10.0.0.1#5,5,10.0.1.1");
    CreatOutIpMap("1,0,10.0.2.2#1,1,10.0.1.2");
    unsigned key = 9;
    const std::string printed = printedBy(
        [&] { EXPECT_EQ(osdIpMapSet("10.0.2#0,1,10.0.1.3#129,0,10.0.1.4", "input", &key), 1); });
    EXPECT_TRUE(
        printed.starts_with("out ip not in map\n"
                            "inkey-->0x1\n"
                            "get osd data x:0 y:1 ip:10.0.1.3\n"
                            "outkey-->0x10000(0,0)-->inx:0,iny:1\n"
                            "in:xmax:1,ymax:2,ip:10.0.1.3\n"
                            "inkey-->0x810000\n"
                            "xIn location over\n"
                            "set string\n"))
        << printed;
    EXPECT_EQ(key, 0x10000U);
    EXPECT_EQ(wall(),
              "2x1 | 0,0,10.0.0.1#0,0,0.0.0.0#5,5,10.0.1.1 6x6 | "
              "1,0,10.0.2.2#0,1,10.0.1.3 1x2");
    EXPECT_EQ(saved(1), "1,0,10.0.2.2#0,1,10.0.1.3");
    const std::string before = wall();
    config->SetConfigChar(kFirstMapIndex, "");
    EXPECT_EQ(osdIpMapSet("10.0.9.9#0,0,10.0.1.9", "in", &key), 1);
    EXPECT_EQ(wall(), before);
    EXPECT_NE(saved(0), "") << "saved all the same";
    EXPECT_EQ(key, 0x10000U);
}

TEST_F(WallMap, ShrinkingWallLeavesNoLineBehind) {
    osdIpMapSet("0,0,a#1,0,b#2,0,c#3,0,d#4,0,e", "out", nullptr);
    osdIpMapSet("0,0,a#1,0,b#2,0,c", "out", nullptr);
    EXPECT_EQ(saved(2) + "|" + saved(3) + "|" + saved(4), "2,0,c#0,0,0.0.0.0||");
    EXPECT_EQ(config->GetConfig(kOutNumIndex), "3");
    osdIpMapSet("0,0,a", "out", nullptr);
    EXPECT_EQ(saved(1) + saved(2) + saved(3) + saved(4), "") << "shrinking twice, neither";
    osdIpMapSet("", "out", nullptr);
    EXPECT_EQ(wall(), "0x0");
    EXPECT_EQ(saved(0), "");
    EXPECT_EQ(config->GetConfig(kOutNumIndex), "0");
}

TEST_F(WallMap, StatusQueryNamesTheBoxAndMaybeAnAddress) {
    struct Row {
        const char* text;
        int result;
        const char* ip;
        const char* address;
        int port;
    };
    for (const Row& row :
         {Row{"[seq]\nip=1.2.3.4\nto=10.0.0.1:5000", 0, "old", "old", 7},
          Row{"[seq]\nip=1.2.3.4\nto=10.0.0.100:50000\nx", 1, "1.2.3.4", "10.0.0.100", 50000},
          Row{"[seq]\nip=1.2.3.4\nto=10.0.0.10:50000\nx", 1, "1.2.3.4", "old", 7},  // 18 characters
          Row{"[seq]\n1.2.3.4=5\nno_colon=10.0.0.10\nx", 1, "5", "old", 7},
          Row{"[seq]\n1.2.3.4\nno_colon=100.100.100.1\nx", 1, "1.2.3.4", "100.100.100.1", -1},
          Row{"[seq]\na=b=c\nto=10.0.0.10:123456x\nx", 1, "b=c", "10.0.0.10", 123456},
          Row{"[seq]\nip=1234567890123456789012345\nto=1234567890123456789012:1\nx", 1,
              "1234567890123456789", "1234567890123456789", 1}}) {
        SCOPED_TRACE(row.text);
        std::array<char, 20> ip{'o', 'l', 'd'};
        std::array<char, 20> address{'o', 'l', 'd'};
        int port = 7;
        EXPECT_EQ(get_seq_ip(row.text, ip.data(), address.data(), &port), row.result);
        EXPECT_STREQ(ip.data(), row.ip);
        EXPECT_STREQ(address.data(), row.address);
        EXPECT_EQ(port, row.port);
    }
}

}  // namespace
