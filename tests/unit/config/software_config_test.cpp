#include "config/software_config.h"

#include <thread>

#include "unit/fixture.h"

namespace {

const std::string kHead =
    "kActKeyEvent=\nkHotkeymap=\nkHotCmd0=\nkHotCmd1=\nkHotCmd2=\nkOutNum=0\n";

std::string fixedMapLines(unsigned from = 0) {
    std::string lines;
    for (unsigned line = from; line < 16; ++line) {
        lines += "kOutIpmap" + std::to_string(line) + "=\n";
    }
    return lines;
}

TEST(SoftwareConfig, SettersFollowTheirTraps) {
    SoftwareConfig config("unused");
    const auto set = [&config](const std::string& text) {
        EXPECT_TRUE(config.SetConfigChar(3, text));
        return config.GetConfig(3);
    };
    EXPECT_EQ(set("clear"), "clear");
    EXPECT_EQ(set("clearly"), "");
    EXPECT_EQ(set("clearly"), "clearly");
    EXPECT_EQ(set("map\nkOutNum=9"), "map");
    EXPECT_EQ(set(std::string("cmd\0rest", 8)), "cmd");
    EXPECT_EQ(printedBy([&config] {
                  EXPECT_TRUE(config.SetConfig(kOutNumIndex, -12));
                  EXPECT_FALSE(config.SetConfig(kSettingCount, "x"));
                  EXPECT_FALSE(config.SetConfig(kSettingCount, 1));
              }),
              "setconfig int\nset string\nsetconfig int\n");
    EXPECT_EQ(config.GetConfig(kOutNumIndex), "-12");
    EXPECT_EQ(config.outNum(), 0);
    EXPECT_EQ(config.GetConfig(kSettingCount), "error");
    EXPECT_EQ(config.GetConfig(kSettingCount - 1), "");
}

TEST(SoftwareConfig, ReadingStopsAtTheFirstMissingKey) {
    using Values = std::vector<std::pair<unsigned, std::string>>;
    const std::string fixed =
        "kUdpServerPort=81\nkActKeyEvent=\nkHotkeymap=\nkHotCmd0=\nkHotCmd1=\nkHotCmd2=c2\n";
    const std::tuple<std::string, Values, int> rows[] = {
        {"", {{0, "80"}, {6, "5"}}, 0},
        {"kUdpServerPort=81\nkOutNum=3\nkOutIpmap0=a", {{0, "81"}, {6, "5"}, {7, ""}}, 0},
        {fixed + "kOutNum=3\nkOutIpmap0=a\nkOutIpmap1=b\nkOutIpmap3=d\n",
         {{5, "c2"}, {6, "3"}, {7, "a"}, {8, "b"}, {10, ""}},
         3},
        {fixed + "kOutNum=\nkOutIpmap0=", {{6, "5"}, {7, ""}}, 5},  // the value before stays
        {fixed + "kOutNum= 12 walls", {{6, " 12 walls"}}, 12},
        {fixed + "kOutNum=many", {{6, "many"}}, 0},
        {fixed + "kOutNum=99999999999", {{6, "99999999999"}}, INT32_MAX},
    };
    for (const auto& [text, values, outNum] : rows) {
        const Scratch scratch;
        SoftwareConfig config(scratch.put("ini", text));
        config.SetConfig(kOutNumIndex, 5);
        EXPECT_TRUE(config.ReadConfig());
        for (const auto& [index, value] : values) {
            EXPECT_EQ(config.GetConfig(index), value) << text << ", setting " << index;
        }
        EXPECT_EQ(config.outNum(), outNum) << text;
    }
}

TEST(SoftwareConfig, AFileThatCannotBeMeantIsSetAsideWhole) {
    std::string manyKeysInALine;
    for (unsigned index = 0; index < kSettingCount; ++index) {
        manyKeysInALine += settingKey(index);
    }
    const std::pair<std::string, std::string> rows[] = {
        {std::string("kUdpServerPort=81\n\0\n", 20), "holds a NUL byte"},
        {"kUdpServerPort=81\n" + std::string(kSettingsLimit, ' '), "is larger than 16 MiB"},
        {manyKeysInALine, "holds values of more than 16 MiB"},
    };
    for (const auto& [text, problem] : rows) {
        const Scratch scratch;
        scratch.put("file", text);
        const std::string path = scratch.path("ini");
        std::filesystem::create_symlink("file", path);
        SoftwareConfig config(path);
        EXPECT_EQ(printedBy([&] { EXPECT_TRUE(config.ReadConfig()); }),
                  "[ReadConfig]-69: read_config:" + path + "\n" + path + " " + problem +
                      ": no settings loaded, file kept as " + path + ".refused\n");
        EXPECT_TRUE(config.SaveConfig());
        EXPECT_TRUE(scratch.get("ini.refused") == text) << problem;
        EXPECT_EQ(scratch.get("file"), "kUdpServerPort=80\n" + kHead + fixedMapLines());
        EXPECT_TRUE(std::filesystem::is_symlink(path)) << "the link was replaced";
    }
    const Scratch directory;
    directory.put("file", "");
    SoftwareConfig config(directory.path());
    EXPECT_EQ(printedBy([&] { EXPECT_TRUE(config.ReadConfig()); }),
              "[ReadConfig]-69: read_config:" + directory.path() + "\n" + directory.path() +
                  " is not a regular file: no settings loaded\n");
    EXPECT_FALSE(config.SaveConfig());
    EXPECT_EQ(directory.names(), std::set<std::string>{"file"});
}

TEST(SoftwareConfig, TakesLongValuesWholeAndEndsTheFileAtTheFirstEmptyMap) {
    const Scratch scratch;
    const std::string wall(100'000, 'w');
    SoftwareConfig config(scratch.path("ini"));
    config.SetConfig(kFirstMapIndex, wall);
    config.SetConfig(kAlwaysWritten, wall);
    config.SetConfig(kAlwaysWritten + 2, "behind a gap");
    ASSERT_TRUE(config.SaveConfig());
    EXPECT_TRUE(scratch.get("ini") == "kUdpServerPort=80\n" + kHead + "kOutIpmap0=" + wall + "\n" +
                                          fixedMapLines(1) + "kOutIpmap16=" + wall + "\n");
    SoftwareConfig next(scratch.path("ini"));
    next.ReadConfig();
    EXPECT_TRUE(next.GetConfig(kFirstMapIndex) == wall && next.GetConfig(kAlwaysWritten) == wall);
}

TEST(SoftwareConfig, SavesOfSeveralThreadsEndWithTheNewestTable) {
    const Scratch scratch;
    SoftwareConfig config(scratch.path("ini"));
    const auto work = [&config](unsigned index) {
        for (int round = 1; round <= 100; ++round) {
            config.SetConfig(index, round);
            EXPECT_TRUE(config.SaveConfig());
        }
    };
    printedBy([&work] { std::jthread first(work, 1), second(work, 2); });
    SoftwareConfig saved(scratch.path("ini"));
    saved.ReadConfig();
    EXPECT_EQ(saved.GetConfig(1) + saved.GetConfig(2), "100100");
}

}  // namespace
