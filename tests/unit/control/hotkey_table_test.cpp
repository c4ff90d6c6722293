#include "control/hotkey_table.h"

#include <gtest/gtest.h>

#include "app/base/singleton.h"
#include "config/software_config.h"
#include "unit/remote/board.h"

namespace {

std::string repeated(const std::string& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

std::string entriesOf(const HotkeyTable& table) {
    std::string all;
    for (std::size_t i = 0; i < table.count; ++i) {
        all += std::string(table.entries[i].data()) + " ";
    }
    return all;
}

TEST(Hotkeys, ListBecomesEntriesAndASavedForm) {
    struct Row {
        std::string list;
        bool fromOsd;
        std::string entries, saved;
    };
    const std::string longest(59, 'A');
    for (const Row& row :
         {Row{"CTRL+F1#ALT+2", true, "LEFTCTRL+F1 LEFTALT+2 ", "LEFTCTRL+F1#LEFTALT+2#"},
          Row{"LEFTCTRL+F1#LEFTALT+2#", false, "LEFTCTRL+F1 LEFTALT+2 ", "LEFTCTRL+F1#LEFTALT+2#"},
          Row{"##A:X##B#", true, "LEFTA:X LEFTB ", "LEFTA:X#LEFTB#"},
          Row{"#A##B", false, "A B ", "#A##B"}, Row{"", true, "", ""},
          Row{longest, true, "LEFT" + longest + " ", "LEFT" + longest + "#"}}) {
        SCOPED_TRACE(row.list);
        const ParsedHotkeys parsed = parseHotkeys(row.list, row.fromOsd);
        EXPECT_EQ(parsed.problem, "");
        EXPECT_EQ(entriesOf(parsed.table), row.entries);
        EXPECT_EQ(parsed.saved, row.saved);
    }
    EXPECT_EQ(parseHotkeys(repeated("A#", 159), true).table.count, 159U);
    EXPECT_EQ(parseHotkeys(repeated("A#", 160), true).problem, "over 159 entries");
    EXPECT_EQ(parseHotkeys(longest + "A", true).problem, "entry over 63 characters");
    EXPECT_EQ(parseHotkeys(longest + "ABCD", false).problem, "");
    EXPECT_EQ(parseHotkeys(longest + "ABCDE", false).problem, "entry over 63 characters");
}

TEST(Hotkeys, AreReplacedWholeAndSaved) {
    scratchSettings();
    const auto config = Singleton<SoftwareConfig>::instance();
    const auto set = [](std::string text, bool fromOsd) {
        return printedBy([&] { EXPECT_EQ(createHotKey(text, fromOsd), 1U); });
    };
    EXPECT_EQ(set("ctrl+f1#Alt+2:menu", true),
              "sv hotkey-->LEFTCTRL+F1#LEFTALT+2:MENU#\nset string\nset ok\n"
              "[SaveConfig]-110: save config succeed\n");
    const std::string saved = "LEFTCTRL+F1#LEFTALT+2:MENU#";
    EXPECT_EQ(config->GetConfig(kHotkeyMapIndex), saved);
    EXPECT_NE(scratchSettings().get("data/tav_rik.ini").find("kHotkeymap=" + saved + "\n"),
              std::string::npos);
    const std::string entries = entriesOf(hotkeyinfo_.copy());
    set(saved, false);
    EXPECT_EQ(entriesOf(hotkeyinfo_.copy()), entries) << "a reload gives the same entries";
    EXPECT_EQ(set(repeated("A#", 160), true), "hotkey list refused: over 159 entries\n");
    EXPECT_EQ(entriesOf(hotkeyinfo_.copy()), entries);
    EXPECT_EQ(config->GetConfig(kHotkeyMapIndex), saved);
    set("", true);
    EXPECT_EQ(hotkeyinfo_.copy().count, 0U);
    EXPECT_EQ(config->GetConfig(kHotkeyMapIndex), "");
}

TEST(Hotkeys, FirstEntryThatBeginsTheKeysIsFound) {
    hotkeyinfo_.set(parseHotkeys("ALT+2:MENU#CTRL+F1#CTRL+F12", true).table);
    for (const auto& [keys, found, index] : {std::tuple{"LEFTALT+2", true, 0U},
                                             {"LEFTALT+2:", true, 0},
                                             {"LEFTCTRL+F1", true, 1},
                                             {"LEFTCTRL+F12", true, 1},
                                             {"LEFTCTRL+F2", false, 3},
                                             {"LEFTCTRL+F", false, 3},
                                             {"LEFTALT+", false, 3},
                                             {"", false, 3}}) {
        const HotkeyMatch match = findHotkey(keys);
        EXPECT_EQ(match.found, found) << keys;
        EXPECT_EQ(match.index, index) << keys;
    }
    static_assert(sizeof(HotkeyTable) == 10180);
}

}  // namespace
