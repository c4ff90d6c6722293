#include "control/hotkey_table.h"

#include <algorithm>
#include <cstdio>
#include <vector>

#include "base/singleton.h"
#include "base/text.h"
#include "config/software_config.h"

namespace {

char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

/// Whether a line of the settings file gives `saved` back: no line end or NUL in it, and no
/// carriage return at its end, which would count as a part of the line's end.
bool fitsInALine(const std::string& saved) {
    return saved.find_first_of(std::string_view("\0\n", 2)) == std::string::npos &&
           !saved.ends_with('\r');
}

std::string_view combinationOf(const std::array<char, HotkeyTable::kEntrySize>& entry) {
    const std::string_view text = entry.data();
    return text.substr(0, text.find(':'));
}

}  // namespace

ParsedHotkeys parseHotkeys(const std::string& list, bool fromOsd) {
    ParsedHotkeys parsed;
    std::vector<std::string> pieces;
    SplitString(list, pieces, "#");
    for (const std::string& piece : pieces) {
        if (piece.empty()) {
            continue;
        }
        const std::string entry = (fromOsd ? "LEFT" : "") + piece;
        if (parsed.table.count == HotkeyTable::kEntries) {
            parsed.problem = "over 159 entries";
            return parsed;
        }
        if (entry.size() >= HotkeyTable::kEntrySize) {
            parsed.problem = "entry over 63 characters";
            return parsed;
        }
        std::copy(entry.begin(), entry.end(), parsed.table.entries[parsed.table.count].begin());
        ++parsed.table.count;
        parsed.saved += entry + '#';
    }
    if (!fromOsd) {
        parsed.saved = list;
    }
    if (!fitsInALine(parsed.saved)) {
        parsed.problem = "text that no line of the settings holds";
    }
    return parsed;
}

std::uint32_t createHotKey(std::string& text, bool fromOsd) {
    std::transform(text.begin(), text.end(), text.begin(), upper);
    const ParsedHotkeys parsed = parseHotkeys(text, fromOsd);
    if (!parsed.problem.empty()) {
        std::printf("hotkey list refused: %s\n", parsed.problem.c_str());
        return 1;
    }
    hotkeyinfo_.set(parsed.table);
    std::printf("sv hotkey-->%s\n", parsed.saved.c_str());
    const auto config = Singleton<SoftwareConfig>::instance();
    config->SetConfigChar(kHotkeyMapIndex, parsed.saved);
    std::puts("set ok");
    config->SaveConfig();
    return 1;
}

HotkeyMatch findHotkey(const Guarded<HotkeyTable>& hotkeys, std::string_view groupKey) {
    return hotkeys.with([groupKey](const HotkeyTable& table) {
        for (std::size_t i = 0; i < table.count; ++i) {
            if (groupKey.starts_with(combinationOf(table.entries[i]))) {
                return HotkeyMatch{true, i};
            }
        }
        return HotkeyMatch{false, table.count};
    });
}
