#include "remote/wall_edit.h"

#include <algorithm>
#include <cstdio>

#include "base/state.h"
#include "base/text.h"

namespace {

bool nameFits(const std::string& name) {
    if (!AddressText::fits(name)) {
        std::printf("map name over 19 characters:%s\n", name.c_str());
        return false;
    }
    return true;
}

bool isOnScreenGrid(const MapEntry& entry) {
    if (!isOnGrid(entry.x)) {
        std::puts("xIn location over");
        return false;
    }
    if (!isOnGrid(entry.y)) {
        std::puts("yIn location over");
        return false;
    }
    return true;
}

bool isOnWallGrid(const MapEntry& entry) {
    if (!isOnGrid(entry.x)) {
        std::puts("xOut location over");
        return false;
    }
    if (!isOnGrid(entry.y)) {
        std::puts("yOut location over");
        return false;
    }
    return true;
}

std::uint32_t keyOf(const MapEntry& entry) {
    return gridKey(static_cast<std::uint32_t>(entry.x), static_cast<std::uint32_t>(entry.y));
}

struct Size {
    std::uint32_t columns = 0;
    std::uint32_t rows = 0;
};

}  // namespace

MapEntry takeMapEntry(const std::string& text) {
    MapEntry entry = parseMapEntry(text);
    const std::int32_t given = entry.port ? str2int(*entry.port) : kDefaultInputPort;
    const bool usable = given >= 1 && given <= kMaxPort;
    inputPort = usable ? given : kDefaultInputPort;
    if (!usable) {
        std::printf("no input port in %s\n", text.c_str());
    } else if (entry.port) {
        std::printf("get input port %d\n", given);
    }
    return entry;
}

std::optional<unsigned> addScreen(Guarded<outInf>& wall, const std::string& text) {
    const MapEntry entry = takeMapEntry(text);
    if (entry.name.empty()) {
        std::puts("no output ip");
        return std::nullopt;
    }
    if (!isOnWallGrid(entry) || !nameFits(entry.name)) {
        return std::nullopt;
    }
    const std::uint32_t key = keyOf(entry);
    OutInfo screen;
    screen.name.assign(entry.name);
    std::puts("1");
    wall.with([&](outInf& all) {
        all.screens.try_emplace(key, screen);
        all.columns = std::max(all.columns, gridColumn(key) + 1);
        all.rows = std::max(all.rows, gridRow(key) + 1);
    });
    std::printf("out:x:%d,y:%d,outkey:0x%x->ip:%s\n", entry.x, entry.y, key, entry.name.c_str());
    return key;
}

bool addCell(Guarded<outInf>& wall, const std::string& text, unsigned outKey) {
    const MapEntry entry = takeMapEntry(text);
    if (!isOnScreenGrid(entry) || !nameFits(entry.name)) {
        return false;
    }
    std::printf("get osd data x:%d y:%d ip:%s\n", entry.x, entry.y, entry.name.c_str());
    const auto before = wall.with([outKey](const outInf& all) -> std::optional<Size> {
        const auto screen = all.screens.find(outKey);
        if (screen == all.screens.end()) {
            return std::nullopt;
        }
        return Size{screen->second.columns, screen->second.rows};
    });
    if (!before) {
        std::printf("no screen 0x%x for the cell %d,%d\n", outKey, entry.x, entry.y);
        return false;
    }
    std::printf("outkey-->0x%x(%u,%u)-->inx:%d,iny:%d\n", outKey, before->columns, before->rows,
                entry.x, entry.y);
    const std::uint32_t inKey = keyOf(entry);
    const Size after = wall.with([&](outInf& all) {
        OutInfo& screen = all.screens[outKey];
        screen.columns = std::max(screen.columns, gridColumn(inKey) + 1);
        screen.rows = std::max(screen.rows, gridRow(inKey) + 1);
        screen.cells.try_emplace(inKey, InInfo{AddressText{entry.name}});
        return Size{screen.columns, screen.rows};
    });
    std::printf("in:xmax:%u,ymax:%u,ip:%s\n", after.columns, after.rows, entry.name.c_str());
    return true;
}
