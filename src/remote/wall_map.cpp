#include "remote/wall_map.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <vector>

#include "base/singleton.h"
#include "base/state.h"
#include "base/text.h"
#include "config/software_config.h"
#include "remote/map_text.h"
#include "remote/wall_edit.h"

namespace {

/// The whole wall from "out" text, built aside and published in one step.
int setWall(const std::vector<std::string>& entries) {
    Guarded<outInf> wall;
    bool complete = true;
    for (const std::string& text : entries) {
        const MapEntry entry = takeMapEntry(text);
        std::printf("x:%d,y:%d-->ip:%s\n", entry.x, entry.y, entry.name.c_str());
        if (entry.name.empty()) {
            std::puts("output ip NULL");
            complete = false;
            break;
        }
        const std::uint32_t key =
            gridKey(static_cast<std::uint32_t>(entry.x), static_cast<std::uint32_t>(entry.y));
        const bool placed = isOnGrid(entry.x) && isOnGrid(entry.y) && AddressText::fits(entry.name);
        const bool known =
            placed && wall.with([key](const outInf& all) { return all.screens.contains(key); });
        if (known) {
            const AddressText name{entry.name};
            const bool same = wall.with(
                [&](outInf& all) { return std::exchange(all.screens[key].name, name) == name; });
            if (same) {
                std::puts("key in map and ip same");
            }
            continue;
        }
        std::printf("%s no key in map\n", entry.name.c_str());
        if (const auto added = addScreen(wall, text)) {
            addCell(wall, kNoInputCell, *added);
        }
    }
    outInfo_.set(wall.copy());
    if (!complete) {
        return 0;
    }
    return MapToSv();
}

/// The key of the first screen whose name begins with `name`; an empty name means none.
std::optional<unsigned> findScreen(const std::string& name) {
    const outInf wall = outInfo_.copy();
    for (const auto& [key, screen] : wall.screens) {
        if (!name.empty() && screen.name.view().starts_with(name)) {
            return key;
        }
        std::puts("out ip not in map");
    }
    return std::nullopt;
}

/// The cells of one screen from "in" text; the first entry names the screen.
int setCells(const std::vector<std::string>& entries, unsigned* outKey) {
    const auto key = findScreen(entries.empty() ? std::string{} : entries.front());
    if (!key) {
        return MapToSv();
    }
    Guarded<outInf> wall{outInfo_.copy()};
    wall.with([&](outInf& all) {
        OutInfo& screen = all.screens[*key];
        screen.cells.clear();
        screen.columns = 0;
        screen.rows = 0;
    });
    if (outKey != nullptr) {
        *outKey = *key;
    }
    for (std::size_t i = 1; i < entries.size(); ++i) {
        const MapEntry entry = takeMapEntry(entries[i]);
        std::printf("inkey-->0x%x\n", gridKey(static_cast<std::uint32_t>(entry.x),
                                              static_cast<std::uint32_t>(entry.y)));
        addCell(wall, entries[i], *key);
    }
    outInfo_.set(wall.copy());
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

int spltLocationIp(const std::string& line, int* x, int* y, std::string* name) {
    const MapEntry entry = takeMapEntry(line);
    *x = entry.x;
    *y = entry.y;
    *name = entry.name;
    return 1;
}

unsigned createMap(const std::string& entry, bool isOut, unsigned outKey) {
    if (entry.empty()) {
        std::puts("ipmap error");
        return 0;
    }
    if (isOut) {
        return addScreen(outInfo_, entry).value_or(0);
    }
    return addCell(outInfo_, entry, outKey) ? outKey : 0;
}

int CreatOutIpMap(const std::string& line) {
    const std::vector<std::string> entries = mapEntries(line);
    if (entries.empty() || entries.front().empty()) {
        createMap("", true, 0);
        return 1;
    }
    const auto outKey = addScreen(outInfo_, entries.front());
    if (!outKey) {
        return 1;
    }
    for (std::size_t i = 1; i < entries.size(); ++i) {
        createMap(entries[i], false, *outKey);
    }
    createMap(kNoInputCell, false, *outKey);
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
