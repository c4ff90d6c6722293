#include "ctl/check.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cctype>
#include <map>

#include "control/hotkey_table.h"
#include "ctl/loading_run.h"
#include "ctl/meant.h"
#include "remote/map_text.h"

namespace ctl {
namespace {

/// The text, the run and where every setting that was read stands.
class Checker {
 public:
    Checker(std::string_view text, const std::string& console)
        : text_(text),
          run_(runLoading(text, console)),
          values_(settingsIn(text)),
          isConsoleKnown_(!console.empty()) {
        std::size_t line = 1;
        const char* at = text.data();
        std::map<const char*, std::size_t> lines;  // a setting may stand behind a later one
        for (const std::string_view value : values_) {
            lines[value.data()] = 0;
        }
        for (auto& [where, number] : lines) {
            line += static_cast<std::size_t>(std::count(at, where, '\n'));
            at = where;
            number = line;
        }
        for (const std::string_view value : values_) {
            lineOf_.push_back(lines[value.data()]);
        }
    }

    Checked result() && {
        if (!run_.refusal.empty()) {
            addRefusal();
        } else {
            addLostLines();
            addWall();
            addPort();
            addHotkeys();
            addNotes();
        }
        std::ranges::stable_sort(findings_, {}, &Finding::line);
        const std::string& wall = run_.findings.summary;
        return {std::move(findings_),
                isConsoleKnown_ ? wall : wall.substr(0, wall.find("; this console")),
                run_.takesEverything()};
    }

 private:
    void add(Finding finding) { findings_.push_back(std::move(finding)); }
    std::size_t lineOf(unsigned index) const { return index < lineOf_.size() ? lineOf_[index] : 0; }
    std::size_t mapLineOf(std::size_t n) const {
        return lineOf(kFirstMapIndex + static_cast<unsigned>(n));
    }
    std::string value(unsigned index) const {
        return index < values_.size() ? std::string(values_[index]) : "";
    }

    void addRefusal();
    void addLostLines();
    Finding lostLine(const LostLine& line) const;
    void addWall();
    void addPort();
    void addHotkeys();
    void addNotes();
    void noteNames(std::size_t n);

    std::string_view text_;
    LoadingRun run_;
    std::vector<std::string_view> values_;
    std::vector<std::size_t> lineOf_;
    bool isConsoleKnown_;
    std::vector<Finding> findings_;
};

std::string quoted(const std::string& text) { return '"' + text + '"'; }

void Checker::addRefusal() {
    const bool isWide = text_.starts_with("\xFF\xFE") || text_.starts_with("\xFE\xFF") ||
                        (text_.size() > 1 && (text_[0] == '\0') != (text_[1] == '\0'));
    add({0, Severity::kError,
         "the whole file is not taken: " + run_.refusal + (isWide ? " (it is UTF-16)" : ""), "",
         isWide ? "save it as plain text (ASCII, or UTF-8 without a byte order mark)" : ""});
}

void Checker::addLostLines() {
    const std::string missing = settingKey(run_.lost.stop);
    bool isStopTold = false;
    for (const LostLine& line : run_.lost.lines) {
        const bool isBehind = line.setting && *line.setting >= run_.lost.stop;
        if (!isBehind) {
            add(lostLine(line));
        } else if (!isStopTold) {
            isStopTold = true;
            const std::size_t more = run_.lost.behind.size() - 1;
            add({line.number, Severity::kError,
                 "not used" + (more == 0 ? "" : ", nor " + std::to_string(more) + " more") +
                     ": no line has " + quoted(missing),
                 std::string(line.text), "a line " + quoted(missing) + " before it"});
        }
    }
}

Finding Checker::lostLine(const LostLine& line) const {
    Finding finding{line.number, Severity::kError, "", std::string(line.text), ""};
    if (isComment(line.text)) {
        finding.severity = Severity::kWarning;
        finding.message = "a comment is not kept: a start writes the file anew";
        return finding;
    }
    if (line.setting) {
        finding.message = settingKey(*line.setting) + " stands in line " +
                          std::to_string(lineOf(*line.setting)) + ", and that one counts";
        return finding;
    }
    const auto inside = std::ranges::find(lineOf_, line.number);
    if (inside != lineOf_.end()) {
        const auto index = static_cast<unsigned>(inside - lineOf_.begin());
        finding.message = (line.text.starts_with(kByteOrderMark)
                               ? "the file begins with a byte order mark, which is not kept"
                               : settingKey(index) +
                                     " is found inside this line and counts; what "
                                     "stands before it is not kept");
        finding.advice = settingKey(index) + value(index);
        return finding;
    }
    if (const auto meant = meantSetting(line.text)) {
        const std::string key = meant->index ? settingKey(*meant->index) : "kOutIpmapN=";
        finding.message = "is not a setting: its key is written " + quoted(key);
        finding.advice = key + meant->value;
        return finding;
    }
    const bool isRemark = line.text.starts_with('#') || line.text.starts_with("//");
    finding.severity = isRemark ? Severity::kWarning : Severity::kError;
    finding.message = isRemark
                          ? "is no comment (they begin with \"*\", \"!\" or \";\") and not kept"
                          : "is not a setting, and not kept";
    return finding;
}

void Checker::addWall() {
    for (const UnkeptEntry& entry : run_.findings.unkept) {
        Finding finding{mapLineOf(entry.line), Severity::kError, "not taken: " + entry.reason,
                        entry.text, ""};
        if (entry.text.find(';') != entry.text.npos) {
            finding.message =
                "\";\" separates nothing: \"#\" stands between entries, \",\" between "
                "their fields";
        } else if (entry.reason.empty() && parseMapEntry(entry.text).port) {
            finding.severity = Severity::kWarning;
            finding.message =
                "the fourth field has no effect and is not kept; a port offset stands "
                "behind the address, as in 192.168.1.32-2";
        } else if (entry.reason.empty()) {
            finding.message = "is not \"column,row,address\" and only partly taken";
        }
        std::string better = meantMapLine(entry.text);
        if (better != entry.text) {
            finding.advice = std::move(better);
        }
        add(std::move(finding));
    }
    if (!run_.findings.unused.empty()) {
        const std::size_t n = run_.findings.unused.front();
        const std::size_t more = run_.findings.unused.size() - 1;
        const unsigned index = kFirstMapIndex + static_cast<unsigned>(n);
        add({mapLineOf(n), Severity::kError,
             "not used" + (more == 0 ? "" : ", nor " + std::to_string(more) + " more") + ": " +
                 (run_.wall.isUsed ? "it stands behind an empty map line" : "kOutNum is 0"),
             settingKey(index) + value(index),
             run_.wall.isUsed ? "the map lines without a gap" : "kOutNum=1"});
    }
}

void Checker::addPort() {
    if (!run_.portTaken) {
        add({lineOf(kServerPortIndex), Severity::kError, "is no UDP port: 80 counts",
             settingKey(kServerPortIndex) + value(kServerPortIndex),
             settingKey(kServerPortIndex) + "80"});
    }
}

void Checker::addHotkeys() {
    const std::size_t line = lineOf(kHotkeyMapIndex);
    std::string list = value(kHotkeyMapIndex);
    if (!run_.hotkeyProblem.empty()) {
        add({line, Severity::kError, "no hotkey is taken: " + run_.hotkeyProblem, list, ""});
        return;
    }
    std::ranges::transform(list, list.begin(), [](unsigned char c) { return std::toupper(c); });
    const HotkeyTable table = parseHotkeys(list, false).table;
    const Guarded<HotkeyTable> whole{table};
    for (std::size_t i = 0; i < table.count; ++i) {
        const std::string text = table.entries[i].data();
        const std::string combination = text.substr(0, text.find(':'));
        const HotkeyMatch first = findHotkey(whole, combination);
        if (first.found && first.index < i) {
            const std::string other = table.entries[first.index].data();
            add({line, Severity::kNote,
                 combination + " is never found: it begins like " +
                     other.substr(0, other.find(':')) +
                     ", which stands before it; the longer one goes first",
                 "", ""});
        }
    }
}

void Checker::addNotes() {
    std::map<std::uint32_t, std::size_t> lineOfScreen;
    for (std::size_t n = 0; n < run_.wall.lines.size(); ++n) {
        const auto entries = mapEntries(run_.wall.lines[n]);
        if (!entries.empty()) {
            lineOfScreen.emplace(keyOf(parseMapEntry(entries[0])), mapLineOf(n));
        }
        noteNames(n);
    }
    for (const WallNote& note : run_.findings.notes) {
        const auto line = note.screen ? lineOfScreen.find(*note.screen) : lineOfScreen.end();
        add({line == lineOfScreen.end() ? 0 : line->second, Severity::kNote, note.text, "", ""});
    }
    const std::size_t wide = text_.find("\r\n");
    if (wide != text_.npos) {
        add({1 + static_cast<std::size_t>(
                     std::count(text_.begin(), text_.begin() + static_cast<long>(wide), '\n')),
             Severity::kNote, "lines end in CR LF: that is taken, and written back as LF", "", ""});
    }
}

/// Addresses to which nothing can be sent, and ports that are none.
void Checker::noteNames(std::size_t n) {
    constexpr int kBasePort = 80, kMostPort = 65535;
    for (const std::string& text : mapEntries(run_.wall.lines[n])) {
        const std::string name = parseMapEntry(text).name;
        const std::size_t hyphen = name.find('-');
        const std::string address = name.substr(0, hyphen);
        in_addr parsed{};
        if (!address.empty() && inet_pton(AF_INET, address.c_str(), &parsed) != 1) {
            add({mapLineOf(n), Severity::kNote,
                 address + " is no IPv4 address: nothing can be sent there", text, ""});
        }
        if (hyphen == name.npos) {
            continue;
        }
        const std::string offset = name.substr(hyphen + 1);
        const bool isNumber =
            !offset.empty() && offset.find_first_not_of("0123456789") == offset.npos;
        if (!isNumber || offset.size() > 5 || kBasePort + std::stoi(offset) > kMostPort) {
            add({mapLineOf(n), Severity::kNote,
                 offset + " is no port offset (0 to " + std::to_string(kMostPort - kBasePort) + ")",
                 text, ""});
        }
    }
}

}  // namespace

std::size_t Checked::count(Severity severity) const {
    return static_cast<std::size_t>(std::ranges::count(findings, severity, &Finding::severity));
}

Checked check(std::string_view text, const std::string& console) {
    return Checker(text, console).result();
}

}  // namespace ctl
