#include "remote/wall_map.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

#include "base/singleton.h"
#include "base/state.h"
#include "base/text.h"
#include "config/software_config.h"
#include "remote/map_text.h"
#include "remote/wall_edit.h"

namespace {

/// One entry of "out" text. False when it has no name, which ends the text.
bool setScreen(WallDraft& draft, const std::string& text) {
    const MapEntry entry = takeEntry(draft, text);
    std::printf("x:%d,y:%d-->ip:%s\n", entry.x, entry.y, entry.name.c_str());
    if (entry.name.empty()) {
        std::puts("output ip NULL");
        return false;
    }
    const bool placed = isOnGrid(entry.x) && isOnGrid(entry.y) && AddressText::fits(entry.name);
    const auto known = placed ? draft.wall.screens.find(keyOf(entry)) : draft.wall.screens.end();
    if (known != draft.wall.screens.end()) {
        const AddressText name{entry.name};
        if (std::exchange(known->second.name, name) == name) {
            std::puts("key in map and ip same");
        }
        return true;
    }
    std::printf("%s no key in map\n", entry.name.c_str());
    if (const auto added = addScreen(draft, text)) {
        addCell(draft, kNoInputCell, *added);
    }
    return true;
}

/// The whole wall from "out" text.
int setWall(const std::vector<std::string>& entries) {
    WallDraft draft;
    const bool complete =
        std::all_of(entries.begin(), entries.end(),
                    [&draft](const std::string& text) { return setScreen(draft, text); });
    publish(std::move(draft));
    return complete ? MapToSv() : 0;
}

/// The key of the first screen whose name begins with `name`.
std::optional<unsigned> findScreen(const outInf& wall, const std::string& name) {
    for (const auto& [key, screen] : wall.screens) {
        if (screen.name.view().starts_with(name)) {
            return key;
        }
        std::puts("out ip not in map");
    }
    return std::nullopt;
}

/// The cells of one screen from "in" text; the first entry names the screen.
int setCells(const std::vector<std::string>& entries, unsigned* outKey) {
    WallDraft draft = draftOfWall();
    const auto key = entries.empty() ? std::nullopt : findScreen(draft.wall, entries.front());
    if (!key) {
        return MapToSv();
    }
    OutInfo& screen = draft.wall.screens[*key];
    screen.cells.clear();
    screen.columns = 0;
    screen.rows = 0;
    if (outKey != nullptr) {
        *outKey = *key;
    }
    for (std::size_t i = 1; i < entries.size(); ++i) {
        std::printf("inkey-->0x%x\n", keyOf(takeEntry(draft, entries[i])));
        addCell(draft, entries[i], *key);
    }
    publish(std::move(draft));
    return MapToSv();
}

/// The text of a line after its first "=", the whole line when it has none.
std::string valueOf(const std::string& line) {
    const std::size_t equals = line.find('=');
    return equals == std::string::npos ? line : line.substr(equals + 1);
}

void copyText(const std::string& text, char* out) {
    const AddressText bounded{text};
    std::memcpy(out, bounded.c_str(), AddressText::kSize);
}

}  // namespace

unsigned createMap(const std::string& entry, bool isOut, unsigned outKey) {
    WallDraft draft = draftOfWall();
    if (entry.empty()) {
        std::puts("ipmap error");
        return 0;
    }
    const unsigned key =
        isOut ? addScreen(draft, entry).value_or(0) : (addCell(draft, entry, outKey) ? outKey : 0);
    publish(std::move(draft));
    return key;
}

int CreatOutIpMap(const std::string& line) {
    const std::vector<std::string> entries = mapEntries(line);
    if (entries.empty() || entries.front().empty()) {
        std::puts("ipmap error");
        return 1;
    }
    // Taken out and put back: at start-up nobody else looks, and a wall has thousands of lines.
    WallDraft draft{outInfo_.with([](outInf& wall) { return std::exchange(wall, {}); }), {}};
    if (const auto outKey = addScreen(draft, entries.front())) {
        for (std::size_t i = 1; i < entries.size(); ++i) {
            addCell(draft, entries[i], *outKey);
        }
        addCell(draft, kNoInputCell, *outKey);
    }
    publish(std::move(draft));
    return 1;
}

int osdIpMapSet(const std::string& data, const std::string& kind, unsigned* outKey) {
    if (kind.starts_with("out")) {
        return setWall(mapEntries(data));
    }
    if (kind.starts_with("in")) {
        return setCells(mapEntries(data), outKey);
    }
    std::puts("set osdIpMap error");
    return 0;
}

int MapToSv() {
    const auto config = Singleton<SoftwareConfig>::instance();
    const outInf wall = outInfo_.copy();
    unsigned count = 0;
    for (const auto& [key, screen] : wall.screens) {
        config->SetConfigChar(kFirstMapIndex + count, mapLine(key, screen));
        ++count;
    }
    const std::int32_t previous = std::min(settingNumber(config->GetConfig(kOutNumIndex)),
                                           std::int32_t{kSettingCount - kFirstMapIndex});
    for (unsigned n = count; static_cast<std::int32_t>(n) < previous; ++n) {
        config->SetConfigChar(kFirstMapIndex + n, "clear");
    }
    config->SetConfig(kOutNumIndex, static_cast<int>(count));
    config->SaveConfig();
    return 1;
}

int get_seq_ip(const std::string& text, char* ipOut, char* addrOut, int* portOut) {
    constexpr std::size_t kShortestAddressLine = 19;
    std::vector<std::string> lines;
    SplitString(text, lines, "\n");
    if (lines.size() < 4) {
        return 0;
    }
    copyText(valueOf(lines[1]), ipOut);
    if (lines[2].size() < kShortestAddressLine) {
        return 1;
    }
    const std::string target = valueOf(lines[2]);
    const std::size_t colon = target.find(':');
    copyText(target.substr(0, colon), addrOut);
    *portOut = colon == std::string::npos ? str2int("") : str2int(target.substr(colon + 1));
    return 1;
}
