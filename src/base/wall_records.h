#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <map>

#include "base/address_text.h"

/// The wall's records: a grid of output screens, each split into a grid of cells, each cell showing
/// one input box. Positions are column x and row y, both counted from 0.

/// Largest column or row of a screen on the wall and of a cell on a screen, inclusive.
inline constexpr int kGridLimit = 128;

/// Packs a position into the key that orders the maps: column by column, row by row within one.
constexpr std::uint32_t gridKey(std::uint32_t x, std::uint32_t y) {
    return (x << 16) | (y & 0xFFFFU);
}
constexpr std::uint32_t gridColumn(std::uint32_t key) { return key >> 16; }
constexpr std::uint32_t gridRow(std::uint32_t key) { return key & 0xFFFFU; }

/// A pointer coordinate moved by `delta`, held within 32 bits.
constexpr std::int32_t moved(std::int32_t coordinate, std::int32_t delta) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(std::int64_t{coordinate} + delta, Limits::min(), Limits::max()));
}

/// One cell: the name of the input box that it shows.
struct InInfo {
    AddressText name;

    friend bool operator==(const InInfo&, const InInfo&) = default;
};

/// One output screen.
struct OutInfo {
    std::uint8_t kind = 0;
    std::uint8_t single =
        0;  ///< 1 when the screen has 1x1 cells; kept only in the current screen's copy
    std::uint32_t columns = 0;  ///< one more than the largest cell x
    std::uint32_t rows = 0;     ///< one more than the largest cell y
    AddressText name;
    std::map<std::uint32_t, InInfo> cells;

    bool isSingle() const { return columns == 1 && rows == 1; }

    friend bool operator==(const OutInfo&, const OutInfo&) = default;
};

/// The whole wall.
struct outInf {
    std::uint32_t columns = 0;
    std::uint32_t rows = 0;
    std::map<std::uint32_t, OutInfo> screens;
};

/// The current screen: a private copy of it, its place on the wall, the current cell and the
/// pointer.
struct currentCtl {
    OutInfo screen;
    std::uint32_t outX = 0;
    std::uint32_t outY = 0;
    std::uint32_t cellX = 0;
    std::uint32_t cellY = 0;
    std::int32_t pointerX =
        0;  ///< in the current box's own pointer space; signed in every comparison
    std::int32_t pointerY = 0;
};
