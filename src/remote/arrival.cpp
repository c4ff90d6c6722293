#include "remote/arrival.h"

#include <algorithm>

namespace {

constexpr std::uint32_t kUnit = 1023;

std::uint32_t lastOf(std::uint32_t count) { return count == 0 ? 0 : count - 1; }

std::int32_t cellSize(const ScreenShape& screen) {
    return static_cast<std::int32_t>(
        screen.single ? kUnit : kUnit / std::max<std::uint32_t>(screen.cells.x, 1));
}

/// Converts cell and pointer of the axis along which the pointer did not cross.
void keepAxis(const ScreenShape& from, const ScreenShape& to, Place& place, Axis axis) {
    std::uint32_t& cell = place.cell[axis];
    std::int32_t& pointer = place.pointer[axis];
    if (from.single == to.single) {
        cell = to.single ? 0 : cell;
        return;
    }
    const std::int32_t within = std::max(pointer, 0);
    if (from.single) {
        const std::int32_t size = cellSize(to);
        cell = static_cast<std::uint32_t>(within / size);
        pointer = within % size * static_cast<std::int32_t>(to.cells[axis]);
        return;
    }
    const auto count = static_cast<std::int32_t>(std::max<std::uint32_t>(from.cells[axis], 1));
    pointer = moved(within / count, static_cast<std::int32_t>(cell) * cellSize(from));
    cell = 0;
}

}  // namespace

std::optional<Direction> directionTo(const ScreenShape& from, const ScreenShape& to) {
    for (const DirectionRow& row : kDirections) {
        const bool ahead = row.step < 0 ? to.place[row.axis] < from.place[row.axis]
                                        : to.place[row.axis] > from.place[row.axis];
        if (ahead && to.place[otherAxis(row.axis)] == from.place[otherAxis(row.axis)]) {
            return row.direction;
        }
    }
    return std::nullopt;
}

std::optional<Place> arriveAtEdge(const ScreenShape& from, const ScreenShape& to, const Place& at,
                                  const Position& picture) {
    const auto direction = directionTo(from, to);
    if (!direction) {
        return std::nullopt;
    }
    const DirectionRow& row = rowOf(*direction);
    Place place = at;
    place.pointer[row.axis] = edgeBehind(row, picture[row.axis]);
    place.cell[row.axis] = row.step < 0 ? lastOf(to.cells[row.axis]) : 0;
    if (to.single) {
        place.cell = {};
    }
    return place;
}

Place arriveScaled(const ScreenShape& from, const ScreenShape& to, const Place& at,
                   const Position& picture) {
    auto place = arriveAtEdge(from, to, at, picture);
    if (!place) {
        return {{}, at.pointer};
    }
    const Axis kept = otherAxis(rowOf(*directionTo(from, to)).axis);
    place->cell[kept] = at.cell[kept];
    keepAxis(from, to, *place, kept);
    return *place;
}
