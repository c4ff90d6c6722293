#include "control/hotkey_table.h"

#include "base/singleton.h"
#include "config/software_config.h"
#include "unit/fixture.h"

namespace {

static_assert(sizeof(HotkeyTable) == 10180);

std::string repeated(const std::string& text, int times) {
    return times == 0 ? "" : text + repeated(text, times - 1);
}

/// The setting as the next start reads it.
std::string readBack(const std::string& saved) {
    std::vector<std::string> values(kSettingCount);
    values[kHotkeyMapIndex] = saved;
    const std::string text = settingsText(values);
    return std::string(settingsIn(text)[kHotkeyMapIndex]);
}

std::string entriesOf(const HotkeyTable& table) {
    std::string all;
    for (std::size_t i = 0; i < table.count; ++i) {
        all += std::string(table.entries[i].data()) + " ";
    }
    return all;
}

TEST(Hotkeys, ListBecomesEntriesAndASavedForm) {
    const std::string longest(59, 'A');
    const std::tuple<std::string, bool, std::string, std::string> rows[] = {
        {"CTRL+F1#ALT+2", true, "LEFTCTRL+F1 LEFTALT+2 ", "LEFTCTRL+F1#LEFTALT+2#"},
        {"LEFTCTRL+F1#LEFTALT+2#", false, "LEFTCTRL+F1 LEFTALT+2 ", "LEFTCTRL+F1#LEFTALT+2#"},
        {"##A:X##B#", true, "LEFTA:X LEFTB ", "LEFTA:X#LEFTB#"},
        {"#A##B", false, "A B ", "#A##B"},
        {"", true, "", ""},
        {"A:x\ty\r#B:\x01\x7f\xff", true, "LEFTA:x\ty\r LEFTB:\x01\x7f\xff ",
         "LEFTA:x\ty\r#LEFTB:\x01\x7f\xff#"},
        {"A\r#", false, "A\r ", "A\r#"},
        {longest, true, "LEFT" + longest + " ", "LEFT" + longest + "#"},
    };
    for (const auto& [list, fromOsd, entries, saved] : rows) {
        const ParsedHotkeys parsed = parseHotkeys(list, fromOsd);
        EXPECT_EQ(parsed.problem, "") << list;
        EXPECT_EQ(entriesOf(parsed.table), entries);
        EXPECT_EQ(parsed.saved, saved);
        EXPECT_EQ(readBack(saved), saved);
    }
    for (const auto& [list, fromOsd] : {std::pair{std::string("A#B:\n#"), true},
                                        {std::string("A#\nB"), false},
                                        {std::string("A#B:x\0y", 7), true},
                                        {std::string("A#B\r"), false}}) {
        EXPECT_EQ(parseHotkeys(list, fromOsd).problem, "text that no line of the settings holds");
    }
    EXPECT_EQ(parseHotkeys(repeated("A#", 159), true).table.count, 159U);
    EXPECT_EQ(parseHotkeys(repeated("A#", 160), true).problem, "over 159 entries");
    EXPECT_EQ(parseHotkeys(longest + "A", true).problem, "entry over 63 characters");
    EXPECT_EQ(parseHotkeys(longest + "ABCD", false).problem, "");
    EXPECT_EQ(parseHotkeys(longest + "ABCDE", false).problem, "entry over 63 characters");
}

TEST(Hotkeys, AreReplacedWholeOrNotAtAll) {
    const Root root;
    const auto config = Singleton<SoftwareConfig>::instance();
    std::string list = "ctrl+f1#Alt+2:menu";
    createHotKey(list, true);
    const std::string saved = "LEFTCTRL+F1#LEFTALT+2:MENU#";
    EXPECT_EQ(config->GetConfig(kHotkeyMapIndex), saved);
    const std::string entries = entriesOf(hotkeyinfo_.copy());
    list = saved;
    createHotKey(list, false);
    EXPECT_EQ(entriesOf(hotkeyinfo_.copy()), entries) << "a reload gives the same entries";
    list = repeated("A#", 160);
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(createHotKey(list, true), 1U); }),
              "hotkey list refused: over 159 entries\n");
    EXPECT_EQ(entriesOf(hotkeyinfo_.copy()), entries);
    EXPECT_EQ(config->GetConfig(kHotkeyMapIndex), saved);
}

}  // namespace
