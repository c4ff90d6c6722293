#include "remote/arrival.h"

#include <algorithm>

namespace {

constexpr std::uint32_t kUnit = 1023;

std::uint32_t lastOf(std::uint32_t count) { return count == 0 ? 0 : count - 1; }

std::int32_t cellSize(const ScreenShape& screen) {
    return static_cast<std::int32_t>(
        screen.single ? kUnit : kUnit / std::max<std::uint32_t>(screen.columns, 1));
}

struct Axis {
    std::uint32_t cell = 0;
    std::int32_t pointer = 0;
};

/// The axis along which the pointer did not cross; `fromCount` and `toCount` are the screens' cells
/// on it.
Axis keptAxis(const ScreenShape& from, const ScreenShape& to, Axis at, std::uint32_t fromCount,
              std::uint32_t toCount) {
    if (from.single == to.single) {
        return {to.single ? 0 : at.cell, at.pointer};
    }
    const std::int32_t pointer = std::max(at.pointer, 0);
    if (from.single) {
        const std::int32_t size = cellSize(to);
        return {static_cast<std::uint32_t>(pointer / size),
                pointer % size * static_cast<std::int32_t>(toCount)};
    }
    const auto count = static_cast<std::int32_t>(std::max<std::uint32_t>(fromCount, 1));
    return {0, moved(pointer / count, static_cast<std::int32_t>(at.cell) * cellSize(from))};
}

}  // namespace

Direction directionTo(const ScreenShape& from, const ScreenShape& to) {
    if (from.outX == to.outX && from.outY != to.outY) {
        return to.outY < from.outY ? Direction::kUp : Direction::kDown;
    }
    if (from.outY == to.outY && from.outX != to.outX) {
        return to.outX < from.outX ? Direction::kLeft : Direction::kRight;
    }
    return Direction::kNone;
}

std::optional<Place> arriveAtEdge(const ScreenShape& from, const ScreenShape& to, const Place& at,
                                  std::int32_t width, std::int32_t height) {
    Place place = at;
    switch (directionTo(from, to)) {
        case Direction::kUp:
            place.y = height;
            place.cellY = lastOf(to.rows);
            break;
        case Direction::kDown:
            place.y = 0;
            place.cellY = 0;
            break;
        case Direction::kLeft:
            place.x = width;
            place.cellX = lastOf(to.columns);
            break;
        case Direction::kRight:
            place.x = 0;
            place.cellX = 0;
            break;
        case Direction::kNone:
            return std::nullopt;
    }
    if (to.single) {
        place.cellX = 0;
        place.cellY = 0;
    }
    return place;
}

Place arriveScaled(const ScreenShape& from, const ScreenShape& to, const Place& at,
                   std::int32_t width, std::int32_t height) {
    const auto place = arriveAtEdge(from, to, at, width, height);
    if (!place) {
        return {0, 0, at.x, at.y};
    }
    Place result = *place;
    const Direction direction = directionTo(from, to);
    if (direction == Direction::kLeft || direction == Direction::kRight) {
        const Axis kept = keptAxis(from, to, {at.cellY, at.y}, from.rows, to.rows);
        result.cellY = kept.cell;
        result.y = kept.pointer;
    } else {
        const Axis kept = keptAxis(from, to, {at.cellX, at.x}, from.columns, to.columns);
        result.cellX = kept.cell;
        result.x = kept.pointer;
    }
    return result;
}
