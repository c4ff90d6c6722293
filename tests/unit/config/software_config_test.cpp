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

/// A start reads, saves and tells what that lost; the file is as it was beside it then.
TEST(SoftwareConfig, KeepsTheFileOfWhichASaveWouldLoseSomething) {
    const std::string port = "kUdpServerPort=81\n";
    const std::string fixed = port + kHead.substr(0, kHead.find("kOutNum"));
    const std::string whole =
        fixed + "kOutNum=2\nkOutIpmap0=a\nkOutIpmap1=b\n" + fixedMapLines(2) + "kOutIpmap16=c\n";
    std::string withReturns = whole;
    for (std::size_t at = 0; (at = withReturns.find('\n', at)) != std::string::npos; at += 2) {
        withReturns.insert(at, "\r");
    }
    const std::pair<std::string, std::string> rows[] = {
        {"", ""},
        {whole, ""},
        {withReturns, ""},
        {port, ""},
        {fixed + "kOutNum=4\nkOutIpmap0=a\nkOutIpmap1=b\nkOutIpmap3=d\nkOutIpmap4=\n"
                 "kOutIpmap5=e\nkOutIpmap6=f\n",
         "no \"kOutIpmap2=\", so kOutIpmap3 and 2 more lines are not used"},
        {fixed + "kOutNum = 4\nkOutIpmap0=a\n",
         "no \"kOutNum=\", so kOutIpmap0 is not used; \"kOutNum = 4\" is not kept"},
        {fixed + "kOutNum=1\nkOutIpmap0,1,5\n", "\"kOutIpmap0,1,5\" is not kept"},
        {"# my wall\n; yours\n" + whole, "\"# my wall\" and 1 more line are not kept"},
        {whole + "kOutNum=9\n", "\"kOutNum=9\" is not kept"},
        {whole + "kOutIpmap17=\nkOutIpmap18=d\n", "\"kOutIpmap18=d\" is not kept"},
    };
    for (const auto& [text, why] : rows) {
        const Scratch scratch;
        const std::string path = scratch.put("ini", text);
        chmod(path.c_str(), 0640);
        SoftwareConfig config(path);
        config.ReadConfig();
        const std::string line =
            why.empty() ? "" : "settings: " + why + "; the file as it was is " + path + ".before";
        EXPECT_EQ(config.keepFile(config.lostByASave()), line) << text;
        EXPECT_TRUE(config.SaveConfig());
        EXPECT_EQ(scratch.get("ini.before"), why.empty() ? "" : text);
        EXPECT_EQ(std::filesystem::exists(path + ".before"), !why.empty());
        struct stat info {};
        EXPECT_TRUE(why.empty() || (stat((path + ".before").c_str(), &info) == 0 &&
                                    (info.st_mode & 0777) == 0640));
    }
}

TEST(SoftwareConfig, AnEditMadeMeanwhileIsLeftOrKept) {
    const Scratch scratch;
    SoftwareConfig config(scratch.path("ini"));
    config.ReadConfig();
    config.SaveConfig();
    scratch.put("ini", "edited");
    EXPECT_TRUE(config.SaveConfig());
    EXPECT_EQ(scratch.get("ini"), "edited") << "nothing new is to be saved";
    const std::string kept =
        "settings: edited since the start and not read; the file as it was is ";
    for (const char* text : {"edited", "edited again", "and again", "the fourth", "the fourth"}) {
        scratch.put("ini", text);
        config.SetConfig(kHotkeyMapIndex, config.GetConfig(kHotkeyMapIndex) + "x");
        EXPECT_EQ(
            printedBy([&] { EXPECT_TRUE(config.SaveConfig()); }),
            "[SaveConfig]-110: save config succeed\n" + kept + scratch.path("ini.before") + "\n")
            << text;
    }
    EXPECT_EQ(scratch.get("ini.before"), "the fourth");
    EXPECT_EQ(scratch.get("ini.before.1"), "and again");
    EXPECT_EQ(scratch.get("ini.before.2"), "edited again");
    std::filesystem::remove(scratch.path("ini"));
    EXPECT_TRUE(config.SaveConfig());
    EXPECT_TRUE(std::filesystem::exists(scratch.path("ini")));
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
