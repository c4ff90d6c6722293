#include "ctl/orders.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "base/text.h"
#include "config/config_lines.h"
#include "control/hotkey_table.h"
#include "ctl/loading_run.h"
#include "remote/map_text.h"
#include "remote/wire.h"

namespace ctl {
namespace {

constexpr std::string_view kLeft = "LEFT";

std::string argumentOf(wire::Command command) { return std::string(wire::wordOf(command)) + '&'; }

Orders refused(std::string problem) { return {{}, std::move(problem)}; }

/// One too long for a console's buffer is refused.
Orders bounded(std::vector<std::string> texts) {
    for (const std::string& text : texts) {
        if (text.size() >= wire::kLargestCommand) {
            return refused("the command would have " + std::to_string(text.size()) +
                           " bytes; a console takes less than " +
                           std::to_string(wire::kLargestCommand));
        }
    }
    return {std::move(texts), {}};
}

Orders switched(const std::vector<std::string>& words, std::string_view on, std::string_view off) {
    if (words == std::vector<std::string>{"off"}) {
        return {{std::string(off)}, {}};
    }
    if (words == std::vector<std::string>{"on"} && !on.empty()) {
        return {{std::string(on)}, {}};
    }
    return refused(on.empty() ? "only \"off\" is a command; the keyboard turns it on"
                              : "\"on\" or \"off\" is missing");
}

bool isPlace(const std::string& text) {
    int value = 0;
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), value);
    return problem == std::errc{} && end == text.data() + text.size() && isOnGrid(value);
}

Orders placed(const std::vector<std::string>& words) {
    if (words.size() != 2 || !isPlace(words[0]) || !isPlace(words[1])) {
        return refused("a screen's column and row are missing (0 to 128)");
    }
    return {{std::string(wire::wordOf(wire::Command::kMouseTo)) + ':' + words[0] + ',' + words[1]},
            {}};
}

/// As the console takes the letters of a list.
std::string upper(std::string text) {
    for (char& letter : text) {
        letter = letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    }
    return text;
}

/// The wall of a file that is taken whole; otherwise what is wrong.
std::string wallOf(const std::string& settings, outInf& wall) {
    const LoadingRun run = runLoading(settings, "");
    if (!run.takesEverything()) {
        return "not all of it would be taken; tavrikctl check tells what is wrong";
    }
    wall = run.wall.wall;
    return wall.screens.empty() ? "there is no wall in it" : "";
}

}  // namespace

Orders simpleOrder(const std::string& name, const std::vector<std::string>& words) {
    using wire::Command;
    if (name == "osd") {
        return switched(words, wire::wordOf(Command::kOsdStart), wire::wordOf(Command::kOsdQuit));
    }
    if (name == "preview") {
        return switched(words, "", wire::wordOf(Command::kPreviewQuit));
    }
    if (name == "kvm") {
        return switched(words, "", wire::wordOf(Command::kKvmQuit));
    }
    if (name == "mto") {
        return placed(words);
    }
    if (!words.empty()) {
        return refused("\"" + name + "\" takes no words");
    }
    return {{std::string(wire::wordOf(name == "pause" ? Command::kPause : Command::kContinue))},
            {}};
}

Orders relationOrder(const std::string& settings) {
    outInf wall;
    if (std::string problem = wallOf(settings, wall); !problem.empty()) {
        return refused(std::move(problem));
    }
    std::string text = argumentOf(wire::Command::kRelation);
    for (const auto& [key, screen] : wall.screens) {
        OutInfo alone = screen;
        alone.cells.clear();
        text += (text.back() == '&' ? "" : "#") + mapLine(key, alone);
    }
    return bounded({std::move(text)});
}

Orders detailsOrder(const std::string& settings, const std::string& screen) {
    outInf wall;
    if (std::string problem = wallOf(settings, wall); !problem.empty()) {
        return refused(std::move(problem));
    }
    std::vector<std::string> texts;
    for (const auto& [key, shown] : wall.screens) {
        if (screen.empty() || shown.name.view() == screen) {
            const std::string line = mapLine(key, shown);
            texts.push_back(argumentOf(wire::Command::kDetails) +
                            line.substr(line.find(',', line.find(',') + 1) + 1));
        }
    }
    return texts.empty() ? refused("no screen is called " + screen) : bounded(std::move(texts));
}

Orders hotkeyOrder(const std::vector<std::string>& entries) {
    std::string list;
    for (const std::string& entry : entries) {
        const std::string key = upper(entry);
        if (key.find('#') != std::string::npos || key.empty()) {
            return refused("an entry is one combination, such as CTRL+F1");
        }
        if (key.starts_with("RIGHT")) {
            return refused(key + ": the console puts LEFT before every entry");
        }
        list += (list.empty() ? "" : "#") + key.substr(key.starts_with(kLeft) ? kLeft.size() : 0);
    }
    if (std::string problem = parseHotkeys(list, true).problem; !problem.empty()) {
        return refused(std::move(problem));
    }
    return bounded({argumentOf(wire::Command::kHotkey) + list});
}

std::string settingsWith(const std::vector<std::string>& mapLines) {
    std::vector<std::string> values(kSettingCount);
    values[kServerPortIndex] = std::to_string(wire::kQueryPort);
    values[kOutNumIndex] = std::to_string(mapLines.size());
    std::copy_n(mapLines.begin(),
                std::min<std::size_t>(mapLines.size(), kSettingCount - kFirstMapIndex),
                values.begin() + kFirstMapIndex);
    return settingsText(values);
}

std::vector<std::string> hotkeysIn(const std::string& settings) {
    std::vector<std::string> entries;
    const auto values = settingsIn(settings);
    if (values.size() > kHotkeyMapIndex) {
        SplitString(std::string(values[kHotkeyMapIndex]), entries, "#");
        std::erase(entries, "");
    }
    return entries;
}

std::string replacedBy(const std::string& name, const std::string& settings) {
    const auto values = settingsIn(settings);
    std::string lines;
    for (unsigned i = 0; i < values.size(); ++i) {
        const bool isReplaced = name == "hotkey" ? i == kHotkeyMapIndex : i >= kOutNumIndex;
        if (isReplaced && !values[i].empty()) {
            lines += settingKey(i) + std::string(values[i]) + "\n";
        }
    }
    return lines;
}

}  // namespace ctl
