#include <algorithm>
#include <map>

#include "base/text.h"
#include "control/hotkey_table.h"
#include "ctl/check.h"
#include "ctl/loading_run.h"
#include "ctl/meant.h"
#include "remote/map_text.h"

namespace ctl {
namespace {

using Values = std::vector<std::string>;

/// The settings that the text says or is meant to say, whether the daemon reads them or not; the
/// map lines in their order, without a gap.
Values meantValues(const std::string& text) {
    Values values(kSettingCount);
    std::map<unsigned, std::string> numbered;
    std::vector<std::string> unnumbered;
    const auto take = [&](unsigned index, const std::string& value) {
        (index < kFirstMapIndex ? values[index] : numbered[index]) = value;
    };
    const std::vector<std::string_view> read = settingsIn(text);
    for (unsigned index = 0; index < read.size(); ++index) {
        take(index, std::string(read[index]));
    }
    std::vector<std::string> lines;
    SplitString(text, lines, "\n");
    for (const std::string& line : lines) {
        const auto meant = isComment(line) ? std::nullopt : meantSetting(line);
        if (!meant) {
            continue;
        }
        if (!meant->index) {
            unnumbered.push_back(meant->value);
        } else if (*meant->index >= kFirstMapIndex ? numbered[*meant->index].empty()
                                                   : values[*meant->index].empty()) {
            take(*meant->index, meant->value);
        }
    }
    values[kServerPortIndex] = values[kServerPortIndex].empty() ? "80" : values[kServerPortIndex];
    values[kOutNumIndex] = values[kOutNumIndex].empty() ? "0" : values[kOutNumIndex];
    unsigned next = kFirstMapIndex;
    const auto append = [&](const std::string& value) {
        const std::string line = meantMapLine(value);
        if (!line.empty() && next < kSettingCount) {
            values[next++] = line;
        }
    };
    for (const auto& [index, value] : numbered) {
        append(value);
    }
    std::ranges::for_each(unnumbered, append);
    return values;
}

/// Hotkeys that fit.
std::string fittingHotkeys(const std::string& list) {
    std::vector<std::string> entries;
    SplitString(list, entries, "#");
    std::string kept;
    std::size_t count = 0;
    for (const std::string& entry : entries) {
        if (!entry.empty() && entry.size() < HotkeyTable::kEntrySize &&
            count < HotkeyTable::kEntries) {
            kept += entry + '#';
            ++count;
        }
    }
    return kept;
}

/// Takes out of the map lines what the wall does not take.
void leaveOutUnkept(Values& values, const LoadingRun& run) {
    for (auto entry = run.findings.unkept.rbegin(); entry != run.findings.unkept.rend(); ++entry) {
        std::string& line = values[kFirstMapIndex + entry->line];
        std::vector<std::string> entries = mapEntries(line);
        const auto last = std::find(entries.rbegin(), entries.rend(), entry->text);
        if (last != entries.rend()) {
            entries.erase(std::next(last).base());
        }
        line.clear();
        for (const std::string& kept : entries) {
            line += (line.empty() ? "" : "#") + kept;
        }
    }
    const auto firstMap = values.begin() + kFirstMapIndex;
    const auto end = std::remove(firstMap, values.end(), "");
    std::fill(end, values.end(), "");
}

}  // namespace

std::optional<std::string> fixed(std::string_view text, const std::string& console) {
    Values values = meantValues(plainText(text));
    if (settingNumber(values[kOutNumIndex]) == 0 && !values[kFirstMapIndex].empty()) {
        values[kOutNumIndex] = "1";
    }
    constexpr int kMostRounds = 5;
    for (int round = 0; round < kMostRounds; ++round) {
        std::string better = settingsText(values);
        const LoadingRun run = runLoading(better, console);
        if (run.takesEverything()) {
            return better;
        }
        if (!run.portTaken) {
            values[kServerPortIndex] = "80";
        }
        if (!run.hotkeyProblem.empty()) {
            values[kHotkeyMapIndex] = fittingHotkeys(values[kHotkeyMapIndex]);
        }
        leaveOutUnkept(values, run);
    }
    return std::nullopt;
}

}  // namespace ctl
