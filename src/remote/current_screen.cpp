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

/// Makes `screen` the current one. The copy goes in whole, with its place on the wall and the
/// pointer.
void enter(unsigned outKey, OutInfo screen, const Place& place) {
    currentInfo.with([&](currentCtl& current) {
        std::swap(current.screen, screen);
        current.outX = gridColumn(outKey);
        current.outY = gridRow(outKey);
        current.cellX = place.cell.x;
        current.cellY = place.cell.y;
        current.pointerX = place.pointer.x;
        current.pointerY = place.pointer.y;
    });
}

int selectByName(const std::string& name) {
    const outInf wall = outInfo_.copy();
    for (const auto& [key, screen] : wall.screens) {
        if (!screen.name.view().starts_with(name)) {
            std::printf("not find outIp:%s in map\n", name.c_str());
            continue;
        }
        OutInfo chosen = screen;
        chosen.single = static_cast<std::uint8_t>(screen.isSingle());
        enter(key, chosen, {});
        std::array<char, AddressText::kSize> address{};
        GetIpFromName(screen.name.c_str(), address.data());
        setOutIp(AddressText{address.data()});
        if (screen.isSingle()) {
            std::puts("this is a singal screen");
        } else {
            std::printf("this is multi_screen-->%ux%u\n", screen.columns, screen.rows);
        }
        return 1;
    }
    return 0;
}

}  // namespace

int getCurrentInfo(const unsigned* outKey, const std::string& name) {
    if (outKey == nullptr) {
        return selectByName(name);
    }
    std::printf("get outkey:0x%x\n", *outKey);
    std::puts("find");
    auto target = screenAt(*outKey);
    if (!target) {
        std::puts("the mouse in the output boundary");
        return 0;
    }
    const currentCtl before = currentInfo.copy();
    const auto place = arriveAtEdge(shapeOf(before), shapeOf(*outKey, *target), placeOf(before),
                                    pictureOf(boxInControl()));
    if (!place) {
        std::puts("move out error");
    }
    target->single = static_cast<std::uint8_t>(target->isSingle());
    enter(*outKey, std::move(*target), place.value_or(placeOf(before)));
    return 1;
}

int getCurrentInfo_(const unsigned* outKey, bool flag) {
    if (outKey == nullptr) {
        return 0;
    }
    const currentCtl before = currentInfo.copy();
    std::printf("current out location(%u,%u) out key %u\n", before.outX, before.outY, *outKey);
    auto target = screenAt(*outKey);
    if (!target) {
        std::puts("the mouse in the output boundary");
        return 0;
    }
    const ScreenShape from = shapeOf(before);
    const ScreenShape to = shapeOf(*outKey, *target);
    std::printf("input 0,x:0x%x,y:0x%x,int x:%u, y:%u\n", to.place.x, to.place.y, to.cells.x,
                to.cells.y);
    Place place{{}, pointerOf(before)};
    if (!flag) {
        if (!directionTo(from, to)) {
            std::puts("output 0,input 0");
        }
        place = arriveScaled(from, to, placeOf(before), pictureOf(boxInControl()));
        target->single = static_cast<std::uint8_t>(to.single);
    }
    std::puts("start cp");
    enter(*outKey, std::move(*target), place);
    std::puts("end cp");
    return 1;
}
