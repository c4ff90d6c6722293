#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/wall_records.h"

/// The wall as text. One line is one output screen and its cells: entries separated by "#", the
/// first the screen, each further one a cell; fields "x,y,name" and optionally ",port". All pure.

struct MapEntry {
    std::int32_t x = -1;  ///< -1 when the field is no number
    std::int32_t y = -1;
    std::string name;
    std::optional<std::string> port;  ///< text of the fourth field
};

constexpr std::uint32_t keyOf(const MapEntry& entry) {
    return gridKey(static_cast<std::uint32_t>(entry.x), static_cast<std::uint32_t>(entry.y));
}

/// The fields of one entry; what is missing keeps its initial value.
MapEntry parseMapEntry(std::string_view entry);

/// The entries of a line. A "#" at the end adds none; two in a row give an empty one.
std::vector<std::string> mapEntries(const std::string& line);

/// Written back: "x,y,name" of the screen, then "#x,y,name" for each cell in key order; no ports.
std::string mapLine(std::uint32_t outKey, const OutInfo& screen);

constexpr bool isOnGrid(std::int32_t coordinate) {
    return coordinate >= 0 && coordinate <= kGridLimit;
}
