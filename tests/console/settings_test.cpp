#include "console.h"
#include "ctl/check.h"

/// What an installer can get wrong in the settings: what the daemon says at its start, what it
/// keeps and what tavrikctl says beforehand.

namespace {

using ::testing::Contains;
using ::testing::HasSubstr;

using Lines = std::vector<std::string>;

const Lines kGood = {"kUdpServerPort=80",
                     "kActKeyEvent=",
                     "kHotkeymap=LEFTCTRL+F1",
                     "kHotCmd0=",
                     "kHotCmd1=",
                     "kHotCmd2=",
                     "kOutNum=2",
                     "kOutIpmap0=0,0,127.0.0.20#0,0,127.0.0.31#1,0,127.0.0.32",
                     "kOutIpmap1=1,0,127.0.0.21#0,0,127.0.0.41#1,0,127.0.0.42-2"};

struct BrokenFile {
    const char* name;
    /// Line number and what stands there instead; "+" before it: in front of it; "-": nothing.
    std::vector<std::pair<std::size_t, std::string>> edits;
    std::vector<std::string> told;    ///< parts of lines of the daemon
    bool isKept;                      ///< as .before
    std::vector<std::string> checks;  ///< all findings: "LINE severity part of the message"
    bool isWide = false;              ///< UTF-16
};

void PrintTo(const BrokenFile& file, std::ostream* out) { *out << file.name; }

std::string textOf(const BrokenFile& file) {
    Lines lines = kGood;
    for (auto edit = file.edits.rbegin(); edit != file.edits.rend(); ++edit) {
        const auto at = lines.begin() + static_cast<long>(edit->first) - 1;
        if (edit->second == "-") {
            lines.erase(at);
        } else if (edit->second.starts_with("+")) {
            lines.insert(at, edit->second.substr(1));
        } else {
            *at = edit->second;
        }
    }
    std::string text;
    for (const std::string& line : lines) {
        text += line + '\n';
    }
    if (file.isWide) {
        std::string wide = "\xFF\xFE";
        for (const char letter : text) {
            wide.append({letter, '\0'});
        }
        return wide;
    }
    return text;
}

const BrokenFile kFiles[] = {
    {"NoMistake",
     {},
     {"wall 2x1 screens, 4 boxes; this console 127.0.0.20 is screen 0,0"},
     false,
     {}},
    {"EqualsLeftOut",
     {{8, "kOutIpmap0,1,5"}},
     {"settings: no \"kOutIpmap0=\", so kOutIpmap1 is not used; \"kOutIpmap0,1,5\" is not kept"},
     true,
     {"8 error is not a setting: its key is written \"kOutIpmapN=\"",
      "9 error not used: no line has \"kOutIpmap0=\""}},
    {"BlanksAroundEquals",
     {{7, "kOutNum = 4"}},
     {"settings: no \"kOutNum=\", so kOutIpmap0 and 1 more line are not used; \"kOutNum = 4\" is not kept"},
     true,
     {"7 error is not a setting: its key is written \"kOutNum=\"",
      "8 error not used, nor 1 more: no line has \"kOutNum=\""}},
    {"KeyInOtherCase",
     {{8, "koutipmap0=0,0,127.0.0.20"}},
     {"settings: no \"kOutIpmap0=\", so kOutIpmap1 is not used; \"koutipmap0=0,0,127.0.0.20\" is not kept"},
     true,
     {"8 error is not a setting: its key is written \"kOutIpmap0=\"",
      "9 error not used: no line has \"kOutIpmap0=\""}},
    {"FixedKeyMissing",
     {{4, "-"}},
     {"settings: no \"kHotCmd0=\", so kOutNum and 2 more lines are not used"},
     true,
     {"6 error not used, nor 2 more: no line has \"kHotCmd0=\""}},
    {"MapNumberLeftOut",
     {{9, "kOutIpmap2=1,0,127.0.0.21"}},
     {"settings: no \"kOutIpmap1=\", so kOutIpmap2 is not used"},
     true,
     {"9 error not used: no line has \"kOutIpmap1=\""}},
    {"EmptyMapLine",
     {{8, "kOutIpmap0="}},
     {"note: behind an empty map line, kOutIpmap1 is not used",
      "settings: behind an empty map line, kOutIpmap1 is not used"},
     true,
     {"9 error not used: it stands behind an empty map line"}},
    {"NoWallBesideMapLines",
     {{7, "kOutNum=0"}},
     {"note: kOutNum is 0, so kOutIpmap0 and 1 more line are not used",
      "settings: kOutNum is 0, so kOutIpmap0 and 1 more line are not used"},
     true,
     {"8 error not used, nor 1 more: kOutNum is 0"}},
    {"RemarkWithNumberSign",
     {{1, "+# the wall in the hall"}},
     {"settings: \"# the wall in the hall\" is not kept"},
     true,
     {"1 warning is no comment (they begin with \"*\", \"!\" or \";\") and not kept"}},
    {"Comment",
     {{8, "+; the wall in the hall"}},
     {"settings: \"; the wall in the hall\" is not kept"},
     true,
     {"8 warning a comment is not kept: a start writes the file anew"}},
    {"UnknownKey",
     {{5, "+kHotCmd9=1"}},
     {"settings: \"kHotCmd9=1\" is not kept"},
     true,
     {"5 error is not a setting, and not kept"}},
    {"BlankAfterComma",
     {{8, "kOutIpmap0=0,0,127.0.0.20#0,0,127.0.0.31#1, 0,127.0.0.32"}},
     {"not taken: 1, 0,127.0.0.32: its row is no number from 0 to 128",
      "settings: \"1, 0,127.0.0.32\" is not kept"},
     true,
     {"8 error not taken: its row is no number from 0 to 128"}},
    {"SemicolonBetweenEntries",
     {{8, "kOutIpmap0=0,0,127.0.0.20;0,0,127.0.0.31"}},
     {"note: screen 0,0 shows no box in cell 0,0",
      "settings: \"0,0,127.0.0.20;0,0,127.0.0.31\" is not kept"},
     true,
     {"8 error \";\" separates nothing: \"#\" stands between entries, \",\" between their fields",
      "8 note 127.0.0.20;0 is no IPv4 address: nothing can be sent there",
      "8 note screen 0,0 shows no box in cell 0,0"}},
    {"SemicolonBetweenFields",
     {{8, "kOutIpmap0=0;0;127.0.0.20#0,0,127.0.0.31"}},
     {"not taken: 0;0;127.0.0.20: its row is no number from 0 to 128",
      "not taken: 0,0,127.0.0.31: its screen is not taken",
      "settings: \"0;0;127.0.0.20\" and 1 more are not kept"},
     true,
     {"8 error \";\" separates nothing: \"#\" stands between entries, \",\" between their fields",
      "8 error not taken: its screen is not taken"}},
    {"CellTwice",
     {{8, "kOutIpmap0=0,0,127.0.0.20#0,0,127.0.0.31#0,0,127.0.0.32"}},
     {"not taken: 0,0,127.0.0.32: 0,0 is 127.0.0.31", "settings: \"0,0,127.0.0.32\" is not kept"},
     true,
     {"8 error not taken: 0,0 is 127.0.0.31"}},
    {"ScreenTwice",
     {{9, "kOutIpmap1=0,0,127.0.0.21#0,0,127.0.0.41"}},
     {"not taken: 0,0,127.0.0.21: 0,0 is 127.0.0.20",
      "not taken: 0,0,127.0.0.41: its screen is not taken",
      "settings: \"0,0,127.0.0.21\" and 1 more are not kept"},
     true,
     {"9 error not taken: 0,0 is 127.0.0.20", "9 error not taken: its screen is not taken"}},
    {"FourthField",
     {{9, "kOutIpmap1=1,0,127.0.0.21#0,0,127.0.0.41,8000"}},
     {"settings: \"0,0,127.0.0.41,8000\" is not kept"},
     true,
     {"9 warning the fourth field has no effect and is not kept"}},
    {"AddressTooLong",
     {{9, "kOutIpmap1=1,0,127.0.0.21#0,0,127.0.0.41-800000000"}},
     {"not taken: 0,0,127.0.0.41-800000000: its address has over 19 characters",
      "note: screen 1,0 shows no box in cell 0,0",
      "settings: \"0,0,127.0.0.41-800000000\" is not kept"},
     true,
     {"9 error not taken: its address has over 19 characters",
      "9 note 800000000 is no port offset (0 to 65455)",
      "9 note screen 1,0 shows no box in cell 0,0"}},
    {"AddressThatIsNone",
     {{9, "kOutIpmap1=1,0,127.0.0.21#0,0,127.0.0.410-70000"}},
     {},
     false,
     {"9 note 127.0.0.410 is no IPv4 address: nothing can be sent there",
      "9 note 70000 is no port offset (0 to 65455)"}},
    {"KeyTwice",
     {{8, "+kOutNum=3"}},
     {"settings: \"kOutNum=3\" is not kept"},
     true,
     {"8 error kOutNum= stands in line 7, and that one counts"}},
    {"KeyInsideALine",
     {{7, "my kOutNum=2"}},
     {"settings: \"my kOutNum=2\" is not kept"},
     true,
     {"7 error kOutNum= is found inside this line and counts; what stands before it is not kept"}},
    {"ByteOrderMark",
     {{1, "\xEF\xBB\xBFkUdpServerPort=80"}},
     {"settings: \"\xEF\xBB\xBF"
      "kUdpServerPort=80\" is not kept"},
     true,
     {"1 error the file begins with a byte order mark, which is not kept"}},
    {"Utf16",
     {},
     {"/data/tav_rik.ini holds a NUL byte: no settings loaded"},
     false,
     {"0 error the whole file is not taken: it holds a NUL byte (it is UTF-16)"},
     true},
    {"PortOutOfRange",
     {{1, "kUdpServerPort=70000"}},
     {"no UDP port in kUdpServerPort=70000"},
     false,
     {"1 error is no UDP port: 80 counts"}},
    {"HotkeyTooLong",
     {{3, "kHotkeymap=LEFTCTRL+" + std::string(60, 'A')}},
     {"hotkey list refused: entry over 63 characters"},
     false,
     {"3 error no hotkey is taken: entry over 63 characters"}},
    {"HotkeyBehindAShorterOne",
     {{3, "kHotkeymap=LEFTCTRL+F1#LEFTCTRL+F12"}},
     {},
     false,
     {"3 note LEFTCTRL+F12 is never found: it begins like LEFTCTRL+F1, which stands before it; the longer one goes first"}},
    {"ScreenBehindAHole",
     {{9, "kOutIpmap1=2,0,127.0.0.21#0,0,127.0.0.131"}},
     {"note: screen 2,0 is behind a hole: no edge leads there"},
     false,
     {"9 note screen 2,0 is behind a hole: no edge leads there"}},
    {"WindowsLineEnds",
     {{1, "kUdpServerPort=80\r"}},
     {},
     false,
     {"1 note lines end in CR LF: that is taken, and written back as LF"}},
};

class Settings : public Console, public ::testing::WithParamInterface<BrokenFile> {};

std::string shown(const ctl::Finding& finding) {
    static constexpr const char* kNames[] = {"error", "warning", "note"};
    return std::to_string(finding.line) + ' ' + kNames[static_cast<int>(finding.severity)] + ' ' +
           finding.message;
}

TEST_P(Settings, AreToldAtTheStartAndByTheCheck) {
    const BrokenFile& file = GetParam();
    const std::string text = textOf(file);
    world().board.write("data/tav_rik.ini", text);
    rig::Daemon console(board().root(), board().work());
    ASSERT_TRUE(console.waitForLine("======>start listenInput<======", kLimit));
    for (const std::string& part : file.told) {
        EXPECT_THAT(console.lines(), Contains(HasSubstr(part)));
    }
    const bool isKept = exists(board().root() / "data/tav_rik.ini.before");
    EXPECT_EQ(isKept, file.isKept);
    EXPECT_EQ(isKept ? board().read("data/tav_rik.ini.before") : text, text);

    const ctl::Checked checked = ctl::check(text, "127.0.0.20");
    std::vector<std::string> found;
    for (const ctl::Finding& finding : checked.findings) {
        found.push_back(shown(finding));
    }
    std::vector<::testing::Matcher<std::string>> expected;
    for (const std::string& part : file.checks) {
        expected.push_back(HasSubstr(part));
    }
    EXPECT_THAT(found, ::testing::ElementsAreArray(expected));
    const auto better = ctl::fixed(text, "127.0.0.20");
    ASSERT_TRUE(better);
    EXPECT_TRUE(ctl::check(*better, "127.0.0.20").takesEverything) << *better;
}

INSTANTIATE_TEST_SUITE_P(BrokenFiles, Settings, ::testing::ValuesIn(kFiles),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
