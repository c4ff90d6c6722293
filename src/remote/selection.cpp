#include "remote/selection.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <optional>

#include "base/text.h"
#include "remote/box_reply.h"
#include "remote/current_screen.h"
#include "remote/direction.h"
#include "remote/handover.h"
#include "remote/lights.h"
#include "remote/reports.h"

namespace {

/// How often a selection starts over because another thread entered another cell meanwhile.
constexpr int kMostSelections = 4;

/// The address part of a map name; prints both.
AddressText addressOf(const AddressText& name) {
    std::array<char, AddressText::kSize> out{};
    GetIpFromName(name.c_str(), out.data());
    return AddressText{out.data()};
}

bool isUserBox(const AddressText& ip) {
    const auto end = user_ip.begin() + std::min<std::ptrdiff_t>(user_n, std::ssize(user_ip));
    return std::find(user_ip.begin(), end, ip) != end;
}

/// What the table knows of a box that has answered before.
std::optional<ViInfo> knownPicture(const AddressText& ip) {
    const unsigned n = GetViNum(ip.c_str());
    if (n == 0) {
        return std::nullopt;
    }
    const ViInfo known = vi_info.with([n](const auto& records) { return records[n]; });
    return known.address == ip ? std::optional(known) : std::nullopt;
}

/// A place on the wall.
struct WallPlace {
    Count screen;
    Count cell;

    friend bool operator==(const WallPlace&, const WallPlace&) = default;
};

WallPlace placeOf(const currentCtl& now) { return {screenOf(now), cellOf(now)}; }

/// A cell as the current screen has it, and where control stood when it was looked up.
struct CellNames {
    WallPlace seenFrom;
    AddressText screen;
    std::optional<AddressText> cell;

    friend bool operator==(const CellNames&, const CellNames&) = default;
};

unsigned inKeyOf(const currentCtl& now) { return gridKey(now.cellX, now.cellY); }

/// The names of cell `inKey`.
CellNames namesIn(const currentCtl& now, unsigned inKey) {
    CellNames names{placeOf(now), now.screen.name, std::nullopt};
    const auto cell = now.screen.cells.find(inKey == kCellInUse ? inKeyOf(now) : inKey);
    if (cell != now.screen.cells.end()) {
        names.cell = cell->second.name;
    }
    return names;
}

/// Everything that changes when a box gets control; what stays as it is has no value.
struct Selection {
    AddressText outIp{AddressText::kThisMachine};
    AddressText ip;
    AddressText name;
    bool found = false;
    std::int32_t portAdd = 0;
    std::optional<bool> user;
    std::optional<bool> relative;
    std::optional<ViInfo> picture;
};

/// Looks a cell's box up and prints what it finds; changes nothing.
Selection lookUp(const CellNames& names) {
    Selection selection;
    if (!names.cell) {
        selection.relative = false;
        std::puts("not find curIp");
        return selection;
    }
    selection.found = true;
    selection.outIp = addressOf(names.screen);
    selection.name = *names.cell;
    selection.portAdd = get_in_port(names.cell->c_str());
    selection.ip = addressOf(*names.cell);
    if (selection.ip.view() == AddressText::kNone) {
        selection.relative = false;
        return selection;
    }
    selection.user = isUserBox(selection.ip);
    if (*selection.user) {
        std::printf("this is user ip :%s\n", selection.ip.c_str());
    }
    selection.picture = knownPicture(selection.ip);
    if (const auto& known = selection.picture) {
        selection.relative = known->relative != 0;
        std::printf("--->get vi info (%d,%d),rel:%d<---\n", known->width, known->height,
                    known->relative);
    }
    return selection;
}

/// The box in control after a selection.
BoxInControl selected(BoxInControl box, const Selection& selection) {
    box.curOutIp = selection.outIp;
    box.curIp = selection.ip;
    box.rel_enable = selection.relative.value_or(box.rel_enable);
    if (!selection.found) {
        return box;
    }
    box.curName = selection.name;
    box.port_add = selection.portAdd;
    box.is_user_ip = selection.user.value_or(box.is_user_ip);
    if (selection.picture) {
        box.XRIGHT = selection.picture->width;
        box.YDOWN = selection.picture->height;
    }
    if (box.is_user_ip) {
        box.XRIGHT = kDefaultWidth;
        box.YDOWN = kDefaultHeight;
    }
    return box;
}

/// Gives control to the box of that cell; where the current cell, or what it shows, changed
/// meanwhile, to the box that it shows then.
Selection giveControl(unsigned inKey) {
    for (int attempt = 1;; ++attempt, inKey = kCellInUse) {
        const auto look = [inKey](const currentCtl& now) { return namesIn(now, inKey); };
        const CellNames names = currentInfo.with(look);
        const Selection selection = lookUp(names);
        const bool last = attempt == kMostSelections;
        const bool done = handOver([&](const BoxInControl& old) -> std::optional<BoxInControl> {
            const bool stands = currentInfo.with(look) == names;
            return stands || last ? std::optional(selected(old, selection)) : std::nullopt;
        });
        if (done) {
            return selection;
        }
    }
}

}  // namespace

unsigned currentInKey() { return currentInfo.with(inKeyOf); }

int get_in_port(const char* name) {
    const char* hyphen = std::strchr(name, '-');
    if (hyphen == nullptr) {
        return 0;
    }
    const std::int32_t offset = str2int(hyphen + 1);
    if (offset < 0 || offset > kMaxPort) {
        std::printf("no port offset in %s\n", name);
        return 0;
    }
    return offset;
}

int GetCurInip(unsigned inKey, char* ipOut) {
    const Selection selection = giveControl(inKey);
    if (ipOut != nullptr) {
        std::memcpy(ipOut, selection.ip.c_str(), AddressText::kSize);
    }
    return selection.found ? 1 : 0;
}

int MouseTo(ConsoleState& state, int x, int y) {
    releaseInput(nullptr);
    const bool onWall = outInfo_.with([&](const outInf& wall) {
        return x >= 0 && y >= 0 && static_cast<unsigned>(x) < wall.columns &&
               static_cast<unsigned>(y) < wall.rows;
    });
    if (!onWall) {
        std::printf("mouset to location error->(%d,%d)\n", x, y);
        return 0;
    }
    const unsigned outKey = gridKey(static_cast<unsigned>(x), static_cast<unsigned>(y));
    getCurrentInfo_(&outKey, true);
    if (GetCurInip(kCellInUse, nullptr) == 1) {
        bringBoxUpToDate(state);
    } else {
        std::puts("error can not get input ip");
    }
    currentInfo.with([](currentCtl& now) {
        now.pointerX = 100;
        now.pointerY = 100;
    });
    return 1;
}
