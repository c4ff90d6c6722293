#include "config/config_lines.h"

#include <gmock/gmock.h>

#include <random>
#include <sstream>

namespace {

using testing::ElementsAre;

const std::string kFixed =
    "kUdpServerPort=81\nkActKeyEvent=a\nkHotkeymap=h\nkHotCmd0=c0\nkHotCmd1=c1\nkHotCmd2=c2\n";

/// The rule as it is told, one search through all lines for every key.
std::vector<std::string> firstLinesThatContainTheKeys(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        if (line.ends_with('\r')) {
            line.pop_back();
        }
        if (line.find_first_of("*!;") != 0) {
            lines.push_back(line);
        }
    }
    std::vector<std::string> values;
    for (unsigned index = 0; index < kSettingCount; ++index) {
        const std::string key = settingKey(index);
        const auto line = std::find_if(lines.begin(), lines.end(), [&](const std::string& text_) {
            return text_.find(key) != std::string::npos;
        });
        if (line == lines.end()) {
            break;
        }
        values.push_back(line->substr(line->find(key) + key.size()));
    }
    return values;
}

TEST(SettingsIn, FollowsTheFirstLineThatContainsTheKey) {
    struct Row {
        const char* what;
        std::string text;
        std::vector<std::string_view> values;
    };
    const Row rows[] = {
        {"empty", "", {}},
        {"one line without its end", "kUdpServerPort=19400", {"19400"}},
        {"comments", "*kUdpServerPort=1\n!kUdpServerPort=2\n;kUdpServerPort=3\n", {}},
        {"a blank before it", " kUdpServerPort=5\n;kActKeyEvent=1\n", {"5"}},
        {"the first line counts", "kUdpServerPort=1\nkUdpServerPort=2\n", {"1"}},
        {"the first place in the line counts",
         "kUdpServerPort=kUdpServerPort=2",
         {"kUdpServerPort=2"}},
        {"two keys in a line", "kUdpServerPort=1 kActKeyEvent=2", {"1 kActKeyEvent=2", "2"}},
        {"the tail of a longer word", "xkUdpServerPort=9\nkUdpServerPort=1\n", {"9"}},
        {"carriage returns",
         "kUdpServerPort=1\r\n\r\nkActKeyEvent=\r2\r\r\nkHotkeymap=3\r",
         {"1", "\r2\r", "3"}},
        {"empty values", "kUdpServerPort=\nkActKeyEvent=", {"", ""}},
        {"no key, no equals sign", "kUdpServerPort\n=\n==\n", {}},
        {"a later key without an earlier one", "kActKeyEvent=1\nkOutNum=3\n", {}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(settingsIn(row.text), row.values) << row.what;
    }
}

TEST(SettingsIn, TakesAMapNumberOnlyAsItIsWritten) {
    const std::string text = kFixed +
                             "kOutNum=2\nkOutIpmap00=a\nkOutIpmap=b\nkOutIpmap10000=c\n"
                             "kOutIpmap4089=d\nxkOutIpmap0=e\nkOutIpmap01=f\nkOutIpmap1=g\n";
    EXPECT_THAT(settingsIn(text), ElementsAre("81", "a", "h", "c0", "c1", "c2", "2", "e", "g"));
}

TEST(SettingsIn, LoadsEveryMapLineThatIsSaved) {
    std::vector<std::string> values(kSettingCount);
    for (unsigned index = 0; index < kSettingCount; ++index) {
        values[index] = "value " + std::to_string(index);
    }
    const std::string text = settingsText(values);
    const auto loaded = settingsIn(text);
    EXPECT_TRUE(std::equal(loaded.begin(), loaded.end(), values.begin(), values.end()))
        << loaded.size() << " values, expected " << values.size();
}

TEST(SettingsIn, AgreesWithTheSearchForEveryKeyOnRandomTexts) {
    const std::vector<std::string> words = {"kOutIpmap",
                                            "kOutNum=",
                                            "kUdpServerPort=",
                                            "kActKeyEvent=",
                                            "kHotkeymap=",
                                            "kHotCmd",
                                            "0",
                                            "1",
                                            "2=",
                                            "0=",
                                            "=",
                                            "\n",
                                            "\n",
                                            "\r\n",
                                            "\n;",
                                            "\n*",
                                            "x",
                                            "k",
                                            "kOutIpmap1=",
                                            "kOutIpmap0="};
    std::mt19937 random(20);
    std::uniform_int_distribution<std::size_t> pick(0, words.size() - 1);
    std::size_t loadedMaps = 0;
    for (int round = 0; round < 600; ++round) {
        std::string text = round % 2 == 0 ? kFixed + "kOutNum=1\n" : "";
        for (int word = 0; word < 60; ++word) {
            text += words[pick(random)];
        }
        const auto values = settingsIn(text);
        ASSERT_THAT(values, testing::ElementsAreArray(firstLinesThatContainTheKeys(text))) << text;
        loadedMaps += values.size() > kFirstMapIndex ? 1 : 0;
    }
    EXPECT_GT(loadedMaps, 50U) << "the texts hardly reach the map lines";
}

}  // namespace
