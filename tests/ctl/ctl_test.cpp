#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <random>
#include <set>
#include <string>

#include "base/singleton.h"
#include "base/state.h"
#include "config/software_config.h"
#include "control/loading.h"
#include "ctl/check.h"
#include "remote/wall_map.h"
#include "silence.h"
#include "unit/fixture.h"

namespace {

const std::string kGood =
    "kUdpServerPort=80\nkActKeyEvent=\nkHotkeymap=LEFTCTRL+F1#\nkHotCmd0=\nkHotCmd1=\n"
    "kHotCmd2=\nkOutNum=3\nkOutIpmap0=0,0,10.0.0.1#0,0,10.0.1.1#1,0,10.0.1.2-3\n"
    "kOutIpmap1=1,0,10.0.0.2#0,0,10.0.2.3\nkOutIpmap2=0,1,10.0.0.3#0,0,10.0.3.4\n";

std::set<std::string> linesOf(const std::string& text) {
    std::set<std::string> lines;
    std::string line;
    for (const char letter : text + '\n') {
        if (letter != '\n') {
            line += letter;
            continue;
        }
        lines.insert(line.ends_with('\r') ? line.substr(0, line.size() - 1) : line);
        line.clear();
    }
    return lines;
}

/// A line that says something: not blank, and not a key alone.
bool saysSomething(const std::string& line) {
    const bool isKeyAlone =
        line.starts_with('k') && line.find('=') == line.size() - 1 &&
        linesOf(kGood + "kOutNum=\nkUdpServerPort=\nkHotkeymap=\n").contains(line);
    const bool isMapAlone = line.starts_with("kOutIpmap") && line.find('=') == line.size() - 1 &&
                            line.find_first_not_of("0123456789", 9) == line.size() - 1;
    return line.find_first_not_of(" \t") != line.npos && !isKeyAlone && !isMapAlone;
}

/// "x,y,name" as the wall is written, or the text itself when it is nothing of the kind.
std::string writtenEntry(const std::string& entry) {
    if (entry.find_first_of("+ \t\r") != entry.npos) {
        return entry;
    }
    int x = 0, y = 0, end = 0;
    return std::sscanf(entry.c_str(), "%d,%d%n", &x, &y, &end) != 2
               ? entry
               : std::to_string(x) + ',' + std::to_string(y) +
                     entry.substr(static_cast<std::size_t>(end));
}

/// Screens and cells of a file's map lines: "SCREEN" and "SCREEN>CELL".
std::set<std::string> entriesOf(const std::string& text) {
    std::set<std::string> entries;
    for (const std::string& line : linesOf(text)) {
        if (!line.starts_with("kOutIpmap") || line.find('=') == line.npos) {
            continue;
        }
        std::string screen, entry;
        for (const char letter : line.substr(line.find('=') + 1) + '#') {
            if (letter != '#') {
                entry += letter;
                continue;
            }
            const std::string written = writtenEntry(entry);
            if (!entry.empty()) {
                entries.insert(screen.empty() ? written : screen + '>' + written);
            }
            screen = screen.empty() ? written : screen;
            entry.clear();
        }
    }
    return entries;
}

class Check : public ::testing::Test {
 protected:
    /// What a start, and the first command that saves the wall, leave of a file: every line and
    /// every entry? Judged by the files that they write.
    bool staysWhole(const std::string& text) {
        scratch_.put("data/tav_rik.ini", text);
        setPathPrefix(scratch_.path());
        outInfo_.set({});
        bool port = false;
        std::string hotkeys, started, saved;
        {
            const tools::Silence silence;
            Singleton<SoftwareConfig>::init();
            const auto config = Singleton<SoftwareConfig>::instance();
            port = loadSettings(*config);
            started = scratch_.get("data/tav_rik.ini");
            makeWall(*config);
            hotkeys = loadHotkeys(*config);
            MapToSv();
            saved = scratch_.get("data/tav_rik.ini");
            Singleton<SoftwareConfig>::end();
        }
        setPathPrefix("");
        std::filesystem::remove_all(scratch_.path("data"));
        const std::set<std::string> kept = linesOf(started);
        for (const std::string& line : linesOf(text)) {
            if (saysSomething(line) && !kept.contains(line)) {
                return false;
            }
        }
        const std::set<std::string> entries =
            outInfo_.copy().screens.empty() ? std::set<std::string>{} : entriesOf(saved);
        for (const std::string& entry : entriesOf(started)) {
            if (!entries.contains(entry)) {
                return false;
            }
        }
        return port && hotkeys.empty();
    }

 private:
    Scratch scratch_;
};

/// A good file with one to four mistakes of the kinds that hands make.
std::string mutated(std::mt19937& random) {
    const auto below = [&random](std::size_t n) { return random() % n; };
    constexpr std::string_view kLetters = "=#,;*! \r\n\t0123456789kKx-.:/";
    std::string text = kGood;
    for (std::size_t n = 1 + below(3); n > 0 && !text.empty(); --n) {
        const std::size_t at = below(text.size());
        const std::size_t end = std::min(text.find('\n', at), text.size() - 1) + 1;
        switch (below(6)) {
            case 0:
                text[at] = kLetters[below(kLetters.size())];
                break;
            case 1:
                text.insert(at, 1, kLetters[below(kLetters.size())]);
                break;
            case 2:
                text.erase(at, 1 + below(3));
                break;
            case 3:  // the rest of a line once more
                text.insert(end, text.substr(at, end - at));
                break;
            case 4:  // the rest of a line elsewhere
                text.insert(below(at + 1), text.substr(at, end - at));
                break;
            default:
                text[at] = static_cast<char>(random());
        }
    }
    return text;
}

TEST_F(Check, IsCleanExactlyWhenAStartAndASaveKeepEverything) {
    std::mt19937 random(20261123);
    int clean = 0;
    for (int n = 0; n < 10'000; ++n) {
        const std::string text = mutated(random);
        const ctl::Checked checked = ctl::check(text, "10.0.0.1");
        const bool isClean =
            checked.count(ctl::Severity::kError) + checked.count(ctl::Severity::kWarning) == 0;
        ASSERT_EQ(isClean, staysWhole(text)) << n << ":\n" << text;
        ASSERT_EQ(isClean, checked.takesEverything) << text;
        clean += isClean ? 1 : 0;
        if (n % 20 == 0) {
            const auto better = ctl::fixed(text, "10.0.0.1");
            ASSERT_TRUE(better && staysWhole(*better)) << text << "->\n" << better.value_or("");
        }
    }
    EXPECT_GT(clean, 300) << "both kinds are tried";
    EXPECT_LT(clean, 5000);
}

struct Ended {
    int status;
    std::string out;
};

/// tavrikctl with these words, in a directory that holds "good.ini" and "bad.ini".
Ended ran(const std::string& words) {
    std::FILE* const program = popen((TAVRIKCTL " " + words).c_str(), "r");
    std::string text(20'000, '\0');
    text.resize(std::fread(text.data(), 1, text.size(), program));
    return {WEXITSTATUS(pclose(program)), text};
}

TEST(Tavrikctl, TellsByItsStatusAndKeepsStreamsApart) {
    const Scratch scratch;
    const std::string good = scratch.put("good.ini", kGood);
    const std::string bad = scratch.put("bad.ini", "; mine\n" + kGood + "kOutNum = 4\n");
    scratch.put("net.ini", "kEth0Ip=10.0.0.2\n");
    const auto [fine, told] = ran("check " + good);
    EXPECT_EQ(fine, 0);
    EXPECT_EQ(told,
              good + ": fine; wall 2x2 screens, 4 boxes; this console 10.0.0.2 is screen 1,0\n");
    const auto [mistakes, lines] = ran("check " + bad + " 2>/dev/null");
    EXPECT_EQ(mistakes, 1);
    EXPECT_TRUE(lines.starts_with(bad + ":1: warning: ")) << lines;
    EXPECT_NE(lines.find(bad + ":12: error: "), lines.npos) << lines;
    EXPECT_EQ(lines.find('\x1B'), lines.npos) << "no colour in a pipe";
    const auto [json, object] = ran("check --json " + bad);
    EXPECT_EQ(json, 1);
    EXPECT_NE(object.find("\"line\": 12"), object.npos) << object;
    EXPECT_EQ(ran("check " + scratch.path("none") + " 2>/dev/null").status, 3);
    EXPECT_EQ(ran("check " + scratch.path("none") + " 2>/dev/null").out, "");
    EXPECT_EQ(ran("chek 2>/dev/null").status, 2);
    EXPECT_EQ(ran("check --in-place " + bad + " 2>/dev/null").status, 2);
    EXPECT_EQ(ran("draw --help").status, 0);
}

TEST(Tavrikctl, WritesOverAFileWhenToldSoAlone) {
    const Scratch scratch;
    const std::string text = "; mine\n" + kGood;
    const std::string bad = scratch.put("bad.ini", text);
    EXPECT_EQ(ran("check --fix " + bad).out.substr(0, 8), "-; mine\n");
    EXPECT_EQ(scratch.get("bad.ini"), text);
    EXPECT_EQ(ran("check --fix --in-place " + bad).status, 0);
    EXPECT_EQ(scratch.get("bad.ini.before"), text);
    EXPECT_EQ(ran("check " + bad).out.find("warning"), std::string::npos);
}

TEST(Tavrikctl, DrawsTheWall) {
    const Scratch scratch;
    const std::string good = scratch.put("good.ini", kGood);
    EXPECT_EQ(ran("draw --console 10.0.0.2 " + good).out,
              "0,0 10.0.0.1                1,0 10.0.0.2 (this console)\n"
              "+-----------+-----------+   #############\n"
              "| 10.0.1.1  | 10.0.1.2  |   # 10.0.2.3  #\n"
              "|           | port 80+3 |   #           #\n"
              "+-----------+-----------+   #############\n"
              "\n"
              "0,1 10.0.0.3\n"
              "+-----------+\n"
              "| 10.0.3.4  |\n"
              "|           |\n"
              "+-----------+\n");
    const std::string svg = scratch.path("wall.svg");
    EXPECT_EQ(ran("draw --svg " + svg + ' ' + good).status, 0);
    const std::string picture = scratch.get("wall.svg");
    for (const char* text : {">10.0.1.2<", ">port 80+3<", ">0,1 10.0.0.3<", "</svg>"}) {
        EXPECT_NE(picture.find(text), picture.npos) << text;
    }
    // 129 columns of screens with a cell far to the right each.
    std::string wide = kGood.substr(0, kGood.find("kOutIpmap0"));
    for (int x = 0; x < 129; ++x) {
        wide += "kOutIpmap" + std::to_string(x) + "=" + std::to_string(x) + ",0,10.0.0.1";
        for (int cell = 0; cell < 129; ++cell) {
            wide += "#" + std::to_string(cell) + "," + std::to_string(cell) + ",10.0.1.1";
        }
        wide += '\n';
    }
    EXPECT_EQ(ran("draw " + scratch.put("wide.ini", wide) + " 2>/dev/null").status, 1);
}

}  // namespace
