#include "remote/map_text.h"

#include <array>
#include <cstdio>

#include "base/text.h"

namespace {

/// The text before the first "," of `rest`, which then begins after it; nothing when `rest` is used
/// up.
std::optional<std::string> takeField(std::optional<std::string_view>& rest) {
    if (!rest) {
        return std::nullopt;
    }
    const std::size_t comma = rest->find(',');
    std::string field(rest->substr(0, comma));
    if (comma == std::string_view::npos) {
        rest.reset();
    } else {
        rest->remove_prefix(comma + 1);
    }
    return field;
}

std::string entryText(std::uint32_t key, const AddressText& name) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%u,%u,%s", gridColumn(key), gridRow(key),
                  name.c_str());
    return text.data();
}

}  // namespace

MapEntry parseMapEntry(std::string_view entry) {
    std::optional<std::string_view> rest = entry;
    MapEntry parsed;
    parsed.x = str2int(takeField(rest).value_or(""));
    parsed.y = str2int(takeField(rest).value_or(""));
    parsed.name = takeField(rest).value_or("");
    parsed.port = takeField(rest);
    return parsed;
}

std::vector<std::string> mapEntries(const std::string& line) {
    std::vector<std::string> entries;
    SplitString(line, entries, "#");
    return entries;
}

std::string mapLine(std::uint32_t outKey, const OutInfo& screen) {
    std::string line = entryText(outKey, screen.name);
    for (const auto& [inKey, cell] : screen.cells) {
        line += '#' + entryText(inKey, cell.name);
    }
    return line;
}
