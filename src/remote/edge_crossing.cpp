#include "remote/edge_crossing.h"

#include <cstdio>

#include "remote/box_in_control.h"
#include "remote/current_screen.h"
#include "remote/lights.h"
#include "remote/reports.h"
#include "remote/selection.h"
#include "remote/send.h"
#include "remote/wire_text.h"

/// One algorithm; the directions are rows. Some lines differ between them on purpose.

namespace {

/// Where control stands and how far it can go.
struct Standing {
    Count cell, cells, screen;
    AddressText name;
    Position pointer;

    bool isSamePlace(const Standing& other) const {
        return cell == other.cell && cells == other.cells && screen == other.screen &&
               name == other.name;
    }
};

Standing standingIn(const currentCtl& now) {
    return {cellOf(now),
            {now.screen.columns, now.screen.rows},
            screenOf(now),
            now.screen.name,
            pointerOf(now)};
}

Standing standing() { return currentInfo.with(standingIn); }

Count wallSize() {
    return outInfo_.with([](const outInf& wall) { return Count{wall.columns, wall.rows}; });
}

void printLimit(Direction direction, const Standing& at, const Count& wall) {
    switch (direction) {
        case Direction::kLeft:
            std::puts("in outmap left MAX");
            break;
        case Direction::kRight:
            std::puts("mouse in max right location");
            break;
        case Direction::kUp:
            std::puts("in outmap UP MAX");
            break;
        case Direction::kDown:
            std::printf("in outmap DOWN MAX-->%u-->outMax-->%u\n", at.screen.y, wall.y);
            break;
    }
}

void printSuccess(Direction direction, bool within) {
    const Standing at = standing();
    const AddressText ip = boxInControl().curIp;
    if (within && direction == Direction::kRight) {
        std::printf("get(0x%x,0x%x) output location:%u,%u-->%s   input locationt:%u,%u--->%s\n",
                    static_cast<unsigned>(at.pointer.x), static_cast<unsigned>(at.pointer.y),
                    at.screen.x, at.screen.y, at.name.c_str(), at.cell.x, at.cell.y, ip.c_str());
    } else if (within && direction == Direction::kDown) {
        std::printf("get new (%u,%u)%s in %u,%u->Ip:%s\n", at.screen.x, at.screen.y,
                    at.name.c_str(), at.cell.x, at.cell.y, ip.c_str());
    } else {
        std::printf("get new in %u,%u->Ip:%s\n", at.cell.x, at.cell.y, ip.c_str());
    }
}

void printFailure(Direction direction, bool within) {
    if (direction == Direction::kRight && !within) {
        std::puts("not get new inIp");
    } else {
        std::puts("error can not get input ip");
    }
}

void notifyOsd() {
    const Standing at = standing();
    sendToOsd(qtFlag ? AddressText{AddressText::kThisMachine} : at.name, wire::kOsdCommandPort,
              bytesOf(wire::crossing(at.name.view(), at.cell.x, at.cell.y)));
}

void putPointer(Axis axis, std::int32_t to) {
    currentInfo.with([=](currentCtl& now) { setPointer(now, axis, to); });
}

/// One cell on, or the neighbouring screen with the cell that its selection sets. A cell that
/// another thread entered meanwhile, or a screen that it cut anew, stays as it is.
void step(const DirectionRow& row, const Standing& at, bool within) {
    if (within) {
        const std::uint32_t cell = next(row, at.cell[row.axis]);
        currentInfo.with([&](currentCtl& now) {
            if (standingIn(now).isSamePlace(at)) {
                (row.axis == Axis::kX ? now.cellX : now.cellY) = cell;
            }
        });
        return;
    }
    Count screen = at.screen;
    screen[row.axis] = next(row, screen[row.axis]);
    const unsigned outKey = gridKey(screen.x, screen.y);
    getCurrentInfo_(&outKey, false);  // a hole in the wall leaves the screen as it is
}

}  // namespace

unsigned cross(ConsoleState& state, Direction direction) {
    const DirectionRow& row = rowOf(direction);
    const Standing at = standing();
    const Count wall = wallSize();
    const bool within = hasNext(row, at.cell[row.axis], at.cells[row.axis]);
    if (!within && !hasNext(row, at.screen[row.axis], wall[row.axis])) {
        printLimit(direction, at, wall);
        putPointer(row.axis, edgeAhead(row, pictureOf(boxInControl())[row.axis]));
        return row.resultAtBorder;
    }
    std::fputs(within ? row.within : row.across, stdout);
    releaseInput(nullptr);
    step(row, at, within);
    if (direction == Direction::kRight && !within) {
        std::printf("start inkey:%u\n", currentInKey());
    }
    if (GetCurInip(kCellInUse, nullptr) == 1) {
        bringBoxUpToDate(state);
        notifyOsd();
        printSuccess(direction, within);
    } else {
        printFailure(direction, within);
    }
    putPointer(row.axis, edgeBehind(row, pictureOf(boxInControl())[row.axis]));
    return 1;
}

void crossByArrow(ConsoleState& state, Direction direction) {
    const DirectionRow& row = rowOf(direction);
    cross(state, direction);
    putPointer(row.axis, insideEdge(row, pictureOf(boxInControl())[row.axis]));
}
