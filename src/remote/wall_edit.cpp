#include "remote/wall_edit.h"

#include <algorithm>
#include <cstdio>

#include "base/state.h"
#include "base/text.h"
#include "remote/handover.h"

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

}  // namespace

WallDraft draftOfWall() { return {outInfo_.copy(), std::nullopt}; }

void publish(WallDraft draft) {
    outInfo_.set(std::move(draft.wall));
    if (draft.port) {
        setInputPort(*draft.port);
    }
}

int spltLocationIp(const std::string& line, int* x, int* y, std::string* name, std::int32_t* port) {
    MapEntry entry = parseMapEntry(line);
    *x = entry.x;
    *y = entry.y;
    *name = std::move(entry.name);
    const std::int32_t given = entry.port ? str2int(*entry.port) : kDefaultInputPort;
    const bool usable = given >= 1 && given <= kMaxPort;
    *port = usable ? given : kDefaultInputPort;
    if (!usable) {
        std::printf("no input port in %s\n", line.c_str());
    } else if (entry.port) {
        std::printf("get input port %d\n", given);
    }
    return 1;
}

MapEntry takeEntry(WallDraft& draft, const std::string& text) {
    MapEntry entry;
    std::int32_t port = 0;
    spltLocationIp(text, &entry.x, &entry.y, &entry.name, &port);
    draft.port = port;
    return entry;
}

std::optional<unsigned> addScreen(WallDraft& draft, const std::string& text) {
    const MapEntry entry = takeEntry(draft, text);
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
    draft.wall.screens.try_emplace(key, screen);
    draft.wall.columns = std::max(draft.wall.columns, gridColumn(key) + 1);
    draft.wall.rows = std::max(draft.wall.rows, gridRow(key) + 1);
    std::printf("out:x:%d,y:%d,outkey:0x%x->ip:%s\n", entry.x, entry.y, key, entry.name.c_str());
    return key;
}

bool addCell(WallDraft& draft, const std::string& text, unsigned outKey) {
    if (text.empty()) {
        std::puts("ipmap error");
        return false;
    }
    const MapEntry entry = takeEntry(draft, text);
    if (!isOnScreenGrid(entry) || !nameFits(entry.name)) {
        return false;
    }
    std::printf("get osd data x:%d y:%d ip:%s\n", entry.x, entry.y, entry.name.c_str());
    const auto found = draft.wall.screens.find(outKey);
    if (found == draft.wall.screens.end()) {
        std::printf("no screen 0x%x for the cell %d,%d\n", outKey, entry.x, entry.y);
        return false;
    }
    OutInfo& screen = found->second;
    std::printf("outkey-->0x%x(%u,%u)-->inx:%d,iny:%d\n", outKey, screen.columns, screen.rows,
                entry.x, entry.y);
    const std::uint32_t inKey = keyOf(entry);
    screen.columns = std::max(screen.columns, gridColumn(inKey) + 1);
    screen.rows = std::max(screen.rows, gridRow(inKey) + 1);
    screen.cells.try_emplace(inKey, InInfo{AddressText{entry.name}});
    std::printf("in:xmax:%u,ymax:%u,ip:%s\n", screen.columns, screen.rows, entry.name.c_str());
    return true;
}
