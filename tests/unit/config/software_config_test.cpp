#include "config/software_config.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <thread>

#include "app/base/path_prefix.h"
#include "app/base/singleton.h"
#include "unit/config/scratch.h"

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

std::string printed(const std::function<void()>& run) {
    testing::internal::CaptureStdout();
    run();
    return testing::internal::GetCapturedStdout();
}

TEST(SoftwareConfig, SavesAndPrintsTheDefaultsAsTwentyThreeLines) {
    const Scratch scratch;
    SoftwareConfig config(scratch.path("ini"));
    const std::string lines = "kUdpServerPort=80\n" + kHead + fixedMapLines();
    EXPECT_EQ(printed([&] { EXPECT_TRUE(config.SaveConfig()); }),
              "[SaveConfig]-110: save config succeed\n");
    EXPECT_EQ(scratch.get("ini"), lines);
    EXPECT_EQ(printed([&] { config.PrintConfig(); }), lines);
}

TEST(SoftwareConfig, KeepsItsFileBehindThePathPrefix) {
    const Scratch scratch;
    scratch.put("data/tav_rik.ini", "kUdpServerPort=81\n");
    setPathPrefix(scratch.path());
    const std::string out = printed([] {
        auto config = std::make_unique<SoftwareConfig>();
        EXPECT_TRUE(config->ReadConfig());
        EXPECT_EQ(config->GetConfig(kServerPortIndex), "81");
        EXPECT_TRUE(config->SaveConfig());
    });
    setPathPrefix("");
    EXPECT_EQ(out,
              "[ReadConfig]-69: read_config:/data/tav_rik.ini\n"
              "[SaveConfig]-110: save config succeed\n"
              "[~SoftwareConfig]-64: SoftwareConfig Normal Exit!\n");
    EXPECT_EQ(scratch.get("data/tav_rik.ini"), "kUdpServerPort=81\n" + kHead + fixedMapLines());
    EXPECT_EQ(Singleton<SoftwareConfig>::instance()->GetConfig(kOutNumIndex), "0");
}

TEST(SoftwareConfig, SettersFollowTheirTraps) {
    SoftwareConfig config("unused");
    const std::string out = printed([&config] {
        EXPECT_TRUE(config.SetConfigChar(3, "clear"));
        EXPECT_EQ(config.GetConfig(3), "clear");
        EXPECT_TRUE(config.SetConfig(3, "clearly"));
        EXPECT_EQ(config.GetConfig(3), "");
        EXPECT_TRUE(config.SetConfig(3, "clearly"));
        EXPECT_EQ(config.GetConfig(3), "clearly");
        EXPECT_TRUE(config.SetConfig(kOutNumIndex, -12));
        EXPECT_EQ(config.GetConfig(kOutNumIndex), "-12");
        EXPECT_EQ(config.outNum(), 0);
        EXPECT_FALSE(config.SetConfig(kSettingCount, "x"));
        EXPECT_FALSE(config.SetConfig(kSettingCount, 1));
        EXPECT_EQ(config.GetConfig(kSettingCount), "error");
        EXPECT_EQ(config.GetConfig(kSettingCount - 1), "");
    });
    EXPECT_EQ(out,
              "set string\nset string\nset string\nsetconfig int\nset string\nsetconfig int\n");
}

TEST(SoftwareConfig, StoresNoTextThatWouldBecomeAnotherLine) {
    SoftwareConfig config("unused");
    config.SetConfig(2, "map\nkOutNum=9");
    config.SetConfig(3, std::string("cmd\0rest", 8));
    EXPECT_EQ(config.GetConfig(2), "map");
    EXPECT_EQ(config.GetConfig(3), "cmd");
}

TEST(SoftwareConfig, ReadingStopsAtTheFirstMissingKey) {
    struct Row {
        const char* what;
        std::string text;
        std::vector<std::pair<unsigned, std::string>> values;
        std::int32_t outNum;
    };
    const std::string fixed =
        "kUdpServerPort=81\nkActKeyEvent=\nkHotkeymap=\nkHotCmd0=\n"
        "kHotCmd1=\nkHotCmd2=c2\n";
    const Row rows[] = {
        {"empty file", "", {{0, "80"}, {6, "0"}}, 0},
        {"below the maps",
         "kUdpServerPort=81\nkOutNum=3\nkOutIpmap0=a",
         {{0, "81"}, {6, "0"}, {7, ""}},
         0},
        {"within the maps",
         fixed + "kOutNum=3\nkOutIpmap0=a\nkOutIpmap1=b\nkOutIpmap3=d\n",
         {{5, "c2"}, {6, "3"}, {7, "a"}, {8, "b"}, {10, ""}},
         3},
        {"empty value keeps the default", fixed + "kOutNum=\nkOutIpmap0=", {{6, "0"}, {7, ""}}, 0},
        {"number with a rest", fixed + "kOutNum= 12 walls", {{6, " 12 walls"}}, 12},
        {"no number", fixed + "kOutNum=many", {{6, "many"}}, 0},
        {"number beyond 32 bits", fixed + "kOutNum=99999999999", {{6, "99999999999"}}, INT32_MAX},
    };
    for (const Row& row : rows) {
        const Scratch scratch;
        SoftwareConfig config(scratch.put("ini", row.text));
        EXPECT_TRUE(config.ReadConfig());
        for (const auto& [index, value] : row.values) {
            EXPECT_EQ(config.GetConfig(index), value) << row.what << ", setting " << index;
        }
        EXPECT_EQ(config.outNum(), row.outNum) << row.what;
    }
}

TEST(SoftwareConfig, ReadingThatStopsBelowTheMapsLeavesTheNumberAlone) {
    const Scratch scratch;
    SoftwareConfig config(scratch.put("ini", "kUdpServerPort=81\n"));
    config.SetConfig(kOutNumIndex, 5);
    config.ReadConfig();
    EXPECT_EQ(config.outNum(), 0);
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
        const std::string path = scratch.put("ini", text);
        SoftwareConfig config(path);
        EXPECT_EQ(printed([&] { EXPECT_TRUE(config.ReadConfig()); }),
                  "[ReadConfig]-69: read_config:" + path + "\n" + path + " " + problem +
                      ": no settings loaded, file kept as " + path + ".refused\n");
        EXPECT_EQ(config.GetConfig(kServerPortIndex), "80") << problem;
        EXPECT_TRUE(config.SaveConfig());
        EXPECT_TRUE(scratch.get("ini.refused") == text) << problem;
        EXPECT_EQ(scratch.get("ini"), "kUdpServerPort=80\n" + kHead + fixedMapLines());
    }
}

TEST(SoftwareConfig, ADirectoryInItsPlaceStaysThere) {
    const Scratch scratch;
    SoftwareConfig config(scratch.path());
    scratch.put("file", "");
    EXPECT_EQ(printed([&] {
                  EXPECT_TRUE(config.ReadConfig());
                  EXPECT_FALSE(config.SaveConfig());
              }),
              "[ReadConfig]-69: read_config:" + scratch.path() + "\n" + scratch.path() +
                  " is not a regular file: no settings loaded\n"
                  "[SaveConfig]-114: save config failed\n");
    EXPECT_EQ(scratch.names(), std::set<std::string>{"file"});
}

TEST(SoftwareConfig, DoesNotSaveOverARefusedFileThatHasToStay) {
    const Scratch scratch;
    const std::string text("settings\0", 9);
    const std::string path = scratch.put("ini", text);
    chmod(path.c_str(), 0666);
    chmod(scratch.path().c_str(), 0555);
    {
        const Unprivileged user;
        SoftwareConfig config(path);
        config.ReadConfig();
        EXPECT_FALSE(config.SaveConfig());
    }
    chmod(scratch.path().c_str(), 0755);
    EXPECT_EQ(scratch.get("ini"), text);
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
    EXPECT_TRUE(next.GetConfig(kFirstMapIndex) == wall);
    EXPECT_TRUE(next.GetConfig(kAlwaysWritten) == wall);
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
    printed([&work] {
        std::thread first(work, 1);
        std::thread second(work, 2);
        first.join();
        second.join();
    });
    SoftwareConfig saved(scratch.path("ini"));
    saved.ReadConfig();
    EXPECT_EQ(saved.GetConfig(1), "100");
    EXPECT_EQ(saved.GetConfig(2), "100");
    EXPECT_EQ(scratch.names(), std::set<std::string>{"ini"});
}

}  // namespace
