#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// The wall as a drawing. No file, no daemon; any thread.

namespace drawing {

/// Column and row, from 0. Column by column in a map, as everywhere.
using Position = std::pair<unsigned, unsigned>;

struct Cell {
    std::string address;
    unsigned port = 0;  ///< offset; 0: not shown
};

struct Screen {
    std::string name;
    bool isHere = false;  ///< this console's
    std::map<Position, Cell> cells;
};

using Wall = std::map<Position, Screen>;

/// In characters, which are twice as high as they are wide.
struct Area {
    std::size_t x = 0, y = 0, width = 0, height = 0;
};

/// The whole drawing as text, a line a row; nothing when it would be above four million characters.
std::optional<std::string> asText(const Wall& wall);

/// The same as a picture (SVG); nothing likewise.
std::optional<std::string> asSvg(const Wall& wall);

}  // namespace drawing
