#include "remote/current_screen.h"

#include <cstdio>
#include <optional>

#include "base/state.h"
#include "base/text.h"
#include "remote/arrival.h"
#include "remote/box_in_control.h"
#include "remote/handover.h"

namespace {

std::optional<OutInfo> screenAt(unsigned outKey) {
    return outInfo_.with([outKey](const outInf& wall) -> std::optional<OutInfo> {
        const auto found = wall.screens.find(outKey);
        return found == wall.screens.end() ? std::nullopt : std::optional(found->second);
    });
}

ScreenShape shapeOf(const currentCtl& current) {
    return {current.screen.single != 0,
            {current.screen.columns, current.screen.rows},
            screenOf(current)};
}

ScreenShape shapeOf(unsigned outKey, const OutInfo& screen) {
    return {
        screen.isSingle(), {screen.columns, screen.rows}, {gridColumn(outKey), gridRow(outKey)}};
}

Place placeOf(const currentCtl& current) { return {cellOf(current), pointerOf(current)}; }

/// How often a screen is looked up again because the wall was changed meanwhile.
constexpr int kMostLooks = 4;

/// What the current screen becomes.
struct Entry {
    OutInfo screen;
    Place place;
};

/// Makes the screen that stood at `outKey` the current one. The copy goes in whole, with its place
/// on the wall and the pointer. False when another one stands there by now: who changes the wall
/// brings the current screen up to date behind that, so that an old copy must not come later still.
bool enter(unsigned outKey, const OutInfo& stood, Entry& entry) {
    return outInfo_.with([&](const outInf& wall) {
        const auto now = wall.screens.find(outKey);
        if (now == wall.screens.end() || now->second != stood) {
            return false;
        }
        currentInfo.with([&](currentCtl& current) {
            std::swap(current.screen, entry.screen);
            current.outX = gridColumn(outKey);
            current.outY = gridRow(outKey);
            current.cellX = entry.place.cell.x;
            current.cellY = entry.place.cell.y;
            current.pointerX = entry.place.pointer.x;
            current.pointerY = entry.place.pointer.y;
        });
        return true;
    });
}

/// Enters the screen at `outKey` as `entryFor(screen, first look)` tells, looking again when it was
/// changed meanwhile. False when there is none.
template <class EntryFor>
bool enterAt(unsigned outKey, EntryFor entryFor) {
    for (int look = 1; look <= kMostLooks; ++look) {
        const auto screen = screenAt(outKey);
        if (!screen) {
            break;
        }
        Entry entry = entryFor(*screen, look == 1);
        if (enter(outKey, *screen, entry)) {
            return true;
        }
    }
    std::puts("the mouse in the output boundary");
    return false;
}

/// The key of the first screen whose name begins with `name`; a line for each before it.
std::optional<unsigned> findByName(const std::string& name) {
    const outInf wall = outInfo_.copy();
    for (const auto& [key, screen] : wall.screens) {
        if (screen.name.view().starts_with(name)) {
            return key;
        }
        std::printf("not find outIp:%s in map\n", name.c_str());
    }
    return std::nullopt;
}

int selectByName(const std::string& name) {
    const auto key = findByName(name);
    OutInfo chosen;
    const bool entered = key && enterAt(*key, [&chosen](const OutInfo& screen, bool /*first*/) {
                             chosen = screen;
                             chosen.single = static_cast<std::uint8_t>(screen.isSingle());
                             return Entry{chosen, {}};
                         });
    if (!entered) {
        return 0;
    }
    std::array<char, AddressText::kSize> address{};
    GetIpFromName(chosen.name.c_str(), address.data());
    setOutIp(AddressText{address.data()});
    if (chosen.isSingle()) {
        std::puts("this is a singal screen");
    } else {
        std::printf("this is multi_screen-->%ux%u\n", chosen.columns, chosen.rows);
    }
    return 1;
}

}  // namespace

int getCurrentInfo(const unsigned* outKey, const std::string& name) {
    if (outKey == nullptr) {
        return selectByName(name);
    }
    std::printf("get outkey:0x%x\n", *outKey);
    std::puts("find");
    const currentCtl before = currentInfo.copy();
    const bool entered = enterAt(*outKey, [&](OutInfo screen, bool first) {
        const auto place = arriveAtEdge(shapeOf(before), shapeOf(*outKey, screen), placeOf(before),
                                        pictureOf(boxInControl()));
        if (!place && first) {
            std::puts("move out error");
        }
        screen.single = static_cast<std::uint8_t>(screen.isSingle());
        return Entry{std::move(screen), place.value_or(placeOf(before))};
    });
    return entered ? 1 : 0;
}

int getCurrentInfo_(const unsigned* outKey, bool flag) {
    if (outKey == nullptr) {
        return 0;
    }
    const currentCtl before = currentInfo.copy();
    std::printf("current out location(%u,%u) out key %u\n", before.outX, before.outY, *outKey);
    const ScreenShape from = shapeOf(before);
    const bool entered = enterAt(*outKey, [&](OutInfo screen, bool first) {
        const ScreenShape to = shapeOf(*outKey, screen);
        if (first) {
            std::printf("input 0,x:0x%x,y:0x%x,int x:%u, y:%u\n", to.place.x, to.place.y,
                        to.cells.x, to.cells.y);
        }
        Place place{{}, pointerOf(before)};
        if (!flag) {
            if (first && !directionTo(from, to)) {
                std::puts("output 0,input 0");
            }
            place = arriveScaled(from, to, placeOf(before), pictureOf(boxInControl()));
            screen.single = static_cast<std::uint8_t>(to.single);
        }
        if (first) {
            std::puts("start cp");
        }
        return Entry{std::move(screen), place};
    });
    if (entered) {
        std::puts("end cp");
    }
    return entered ? 1 : 0;
}
