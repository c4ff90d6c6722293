#include <array>
#include <cstdio>

#include "base/inputevent.h"
#include "remote/select_input.h"
#include "remote/send.h"
#include "remote/wire.h"

/// Control crosses an edge: from cell to cell, at the screen's border to the neighbouring screen.
/// One algorithm; the directions are rows. What they print, and what they return at the wall's
/// border, differs on purpose.

namespace {

/// Where control stands and how far it can go.
struct Standing {
    std::uint32_t cellX, cellY, columns, rows;
    std::uint32_t outX, outY;
    AddressText screen;
    std::int32_t x, y;
};

Standing standing() {
    return currentInfo.with([](const currentCtl& now) {
        return Standing{now.cellX, now.cellY,       now.screen.columns, now.screen.rows, now.outX,
                        now.outY,  now.screen.name, now.pointerX,       now.pointerY};
    });
}

struct WallSize {
    std::uint32_t columns, rows;
};

WallSize wallSize() {
    return outInfo_.with([](const outInf& wall) { return WallSize{wall.columns, wall.rows}; });
}

enum class Edge : std::uint8_t { kLeft, kRight, kUp, kDown };

/// One direction. `limit` and `entry` are the pointer at the wall's border and after a move.
struct EdgeRow {
    int dx, dy;
    bool (*hasCell)(const Standing&);
    bool (*isWallBorder)(const Standing&, const WallSize&);
    std::int32_t (*limit)();
    std::int32_t (*entry)();
    unsigned resultAtBorder;
};

std::int32_t zero() { return 0; }
std::int32_t rightEdge() { return XRIGHT; }
std::int32_t bottomEdge() { return YDOWN; }

constexpr std::array<EdgeRow, 4> kEdges{{
    {-1, 0, [](const Standing& at) { return at.cellX != 0; },
     [](const Standing& at, const WallSize&) { return at.outX == 0; }, zero, rightEdge, 0},
    {1, 0, [](const Standing& at) { return at.cellX + 1 < at.columns; },
     [](const Standing& at, const WallSize& wall) { return at.outX + 1 >= wall.columns; },
     rightEdge, zero, 0},
    {0, -1, [](const Standing& at) { return at.cellY != 0; },
     [](const Standing& at, const WallSize&) { return at.outY == 0; }, zero, bottomEdge, 1},
    {0, 1, [](const Standing& at) { return at.cellY + 1 < at.rows; },
     [](const Standing& at, const WallSize& wall) { return at.outY + 1 >= wall.rows; }, bottomEdge,
     zero, 1},
}};

void printLimit(Edge edge, const Standing& at, const WallSize& wall) {
    switch (edge) {
        case Edge::kLeft:
            std::puts("in outmap left MAX");
            break;
        case Edge::kRight:
            std::puts("mouse in max right location");
            break;
        case Edge::kUp:
            std::puts("in outmap UP MAX");
            break;
        case Edge::kDown:
            std::printf("in outmap DOWN MAX-->%u-->outMax-->%u\n", at.outY, wall.rows);
            break;
    }
}

/// Left, up and down leave their line open after the last dashes.
void printDirection(Edge edge, bool within) {
    switch (edge) {
        case Edge::kLeft:
            std::fputs(within ? "------left input\n------" : "------left output\n------", stdout);
            break;
        case Edge::kRight:
            std::puts(within ? "------right input------" : "------right output------");
            break;
        case Edge::kUp:
            std::fputs(within ? "------up input\n------" : "------up output\n------", stdout);
            break;
        case Edge::kDown:
            std::fputs(within ? "------down input\n------" : "------down output\n------", stdout);
            break;
    }
}

void printSuccess(Edge edge, bool within) {
    const Standing at = standing();
    const AddressText ip = curIp.copy();
    if (within && edge == Edge::kRight) {
        std::printf("get(0x%x,0x%x) output location:%u,%u-->%s   input locationt:%u,%u--->%s\n",
                    static_cast<unsigned>(at.x), static_cast<unsigned>(at.y), at.outX, at.outY,
                    at.screen.c_str(), at.cellX, at.cellY, ip.c_str());
    } else if (within && edge == Edge::kDown) {
        std::printf("get new (%u,%u)%s in %u,%u->Ip:%s\n", at.outX, at.outY, at.screen.c_str(),
                    at.cellX, at.cellY, ip.c_str());
    } else {
        std::printf("get new in %u,%u->Ip:%s\n", at.cellX, at.cellY, ip.c_str());
    }
}

void printFailure(Edge edge, bool within) {
    if (edge == Edge::kRight && !within) {
        std::puts("not get new inIp");
    } else {
        std::puts("error can not get input ip");
    }
}

void notifyOsd() {
    const Standing at = standing();
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "TO:%s,%u,%u", at.screen.c_str(), at.cellX, at.cellY);
    sendToOsd(qtFlag ? AddressText{AddressText::kThisMachine} : at.screen, wire::kOsdCommandPort,
              bytesOf(text.data()));
}

void setPointer(const EdgeRow& row, std::int32_t coordinate) {
    currentInfo.with(
        [&](currentCtl& now) { (row.dx != 0 ? now.pointerX : now.pointerY) = coordinate; });
}

std::uint32_t stepped(std::uint32_t from, int by) {
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(from) + by);
}

/// One cell on, or the neighbouring screen with the cell that its selection sets.
void step(inputevent_& events, const EdgeRow& row, const Standing& at, bool within) {
    if (!within) {
        const unsigned outKey = gridKey(stepped(at.outX, row.dx), stepped(at.outY, row.dy));
        events.getCurrentInfo_(&outKey, false);  // a hole in the wall leaves the screen as it is
        return;
    }
    currentInfo.with([&](currentCtl& now) {
        now.cellX = stepped(at.cellX, row.dx);
        now.cellY = stepped(at.cellY, row.dy);
    });
}

unsigned cross(inputevent_& events, Edge edge) {
    const EdgeRow& row = kEdges[static_cast<std::size_t>(edge)];
    const Standing at = standing();
    const WallSize wall = wallSize();
    const bool within = row.hasCell(at);
    if (!within && row.isWallBorder(at, wall)) {
        printLimit(edge, at, wall);
        setPointer(row, row.limit());
        return row.resultAtBorder;
    }
    printDirection(edge, within);
    events.releaseInput(curIp.copy().c_str());
    step(events, row, at, within);
    if (edge == Edge::kRight && !within) {
        std::printf("start inkey:%u\n", currentInKey());
    }
    if (selectInputOfCell()) {
        bringBoxUpToDate(events);
        notifyOsd();
        printSuccess(edge, within);
    } else {
        printFailure(edge, within);
    }
    setPointer(row, row.entry());
    return 1;
}

}  // namespace

unsigned inputevent_::slideScreenLeft() { return cross(*this, Edge::kLeft); }
unsigned inputevent_::slideScreenRight() { return cross(*this, Edge::kRight); }
unsigned inputevent_::slideScreenUp() { return cross(*this, Edge::kUp); }
unsigned inputevent_::slideScreenDown() { return cross(*this, Edge::kDown); }
