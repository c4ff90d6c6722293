#include "remote/wall_notes.h"

#include <algorithm>
#include <map>
#include <set>

#include "config/config_lines.h"
#include "remote/box_reply.h"
#include "remote/map_text.h"

namespace {

std::string at(std::uint32_t key) {
    return std::to_string(gridColumn(key)) + ',' + std::to_string(gridRow(key));
}

std::string_view addressIn(std::string_view name) { return name.substr(0, name.find('-')); }

bool isBox(std::string_view name) { return !name.empty() && addressIn(name) != AddressText::kNone; }

/// An entry that a save would not write as it stands.
struct Unkept {
    std::string text;
    std::string reason;  ///< why it was not taken; empty when it was, though without all its fields
};

/// Why a position of the wall or of a screen does not show what the entry says.
std::string reasonFor(const MapEntry& entry, const AddressText* there) {
    const std::string range = " is no number from 0 to " + std::to_string(kGridLimit);
    if (!isOnGrid(entry.x)) {
        return "its column" + range;
    }
    if (!isOnGrid(entry.y)) {
        return "its row" + range;
    }
    if (!AddressText::fits(entry.name)) {
        return "its address has over 19 characters";
    }
    if (there == nullptr) {
        return entry.name.empty() ? "it has no address" : "its screen is not taken";
    }
    return there->view() == entry.name ? "" : at(keyOf(entry)) + " is " + there->c_str();
}

/// The entries of a map line that the wall has not as they are written.
std::vector<Unkept> unkeptOf(const outInf& wall, const std::string& line) {
    std::vector<Unkept> unkept;
    const OutInfo* screen = nullptr;
    const std::vector<std::string> texts = mapEntries(line);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        if (texts[i].empty()) {
            continue;
        }
        const MapEntry entry = parseMapEntry(texts[i]);
        const AddressText* there = nullptr;
        if (i == 0) {
            const auto found = wall.screens.find(keyOf(entry));
            there = found == wall.screens.end() ? nullptr : &found->second.name;
            screen = there != nullptr && there->view() == entry.name ? &found->second : nullptr;
        } else if (screen != nullptr) {
            const auto found = screen->cells.find(keyOf(entry));
            there = found == screen->cells.end() ? nullptr : &found->second.name;
        }
        std::string reason = reasonFor(entry, there);
        if (entry.port || !reason.empty()) {
            unkept.push_back({texts[i], std::move(reason)});
        }
    }
    return unkept;
}

/// The lines that make the wall: those before the first empty one.
std::size_t usedLines(const LoadedWall& loaded) {
    const auto end = std::ranges::find(loaded.lines, "");
    return loaded.isUsed ? static_cast<std::size_t>(end - loaded.lines.begin()) : 0;
}

std::vector<Unkept> allUnkept(const LoadedWall& loaded, std::size_t used) {
    std::vector<Unkept> all;
    for (std::size_t n = 0; n < used; ++n) {
        std::ranges::move(unkeptOf(loaded.wall, loaded.lines[n]), std::back_inserter(all));
    }
    return all;
}

/// Lines that nobody reads: those behind the `used` ones.
std::string unusedLines(const LoadedWall& loaded, std::size_t used) {
    std::vector<std::size_t> unused;
    for (std::size_t n = used; n < loaded.lines.size(); ++n) {
        if (!loaded.lines[n].empty()) {
            unused.push_back(n);
        }
    }
    return unused.empty()
               ? ""
               : (loaded.isUsed ? "behind an empty map line, " : "kOutNum is 0, so ") +
                     linesAre("kOutIpmap" + std::to_string(unused[0]), unused.size()) + " not used";
}

/// What a save loses: the lines that nobody reads and the entries that it would not write so.
std::string lostBy(std::string unused, const std::vector<Unkept>& unkept) {
    if (unkept.empty()) {
        return unused;
    }
    return unused + (unused.empty() ? "\"" : "; \"") + unkept[0].text + "\" " +
           (unkept.size() == 1 ? "is" : "and " + std::to_string(unkept.size() - 1) + " more are") +
           " not kept";
}

/// The screen where a console with that address is; screens.end() when it is on none.
auto screenOf(const outInf& wall, std::string_view console) {
    return std::ranges::find_if(wall.screens, [console](const auto& screen) {
        return screen.second.name.view().starts_with(console);
    });
}

std::string summary(const LoadedWall& loaded, std::string_view console) {
    if (!loaded.isUsed) {
        return "no wall: kOutNum is 0";
    }
    const outInf& wall = loaded.wall;
    std::set<std::string_view> boxes;
    for (const auto& [key, screen] : wall.screens) {
        for (const auto& [cell, box] : screen.cells) {
            if (isBox(box.name.view())) {
                boxes.insert(box.name.view());
            }
        }
    }
    const auto place = screenOf(wall, console);
    return "wall " + std::to_string(wall.columns) + "x" + std::to_string(wall.rows) + " screens, " +
           std::to_string(boxes.size()) + (boxes.size() == 1 ? " box" : " boxes") +
           "; this console " + std::string(console) + " is " +
           (place == wall.screens.end() ? "on no screen" : "screen " + at(place->first));
}

/// Appends `more`, each behind `kind`: ten of them and how many there are besides.
void append(std::vector<std::string>& lines, const char* kind,
            const std::vector<std::string>& more) {
    constexpr std::size_t kMost = 10;
    for (std::size_t i = 0; i < std::min(more.size(), kMost); ++i) {
        lines.push_back(kind + more[i]);
    }
    if (more.size() > kMost) {
        lines.push_back(kind + std::to_string(more.size() - kMost) + " more");
    }
}

std::vector<std::string> sharedRecords(const outInf& wall) {
    std::map<unsigned, std::set<std::string>> records;
    for (const auto& [key, screen] : wall.screens) {
        for (const auto& [cell, box] : screen.cells) {
            const std::string address(addressIn(box.name.view()));
            records[GetViNum(address.c_str())].insert(address);
        }
    }
    std::vector<std::string> notes;
    for (const auto& [number, addresses] : records) {
        if (number != 0 && addresses.size() > 1) {
            notes.push_back("boxes " + *addresses.begin() + " and " +
                            *std::next(addresses.begin()) +
                            " end alike and share one record of their picture");
        }
    }
    return notes;
}

/// Among sorted names, what one begins with stands before it.
std::vector<std::string> alikeScreens(const outInf& wall) {
    std::vector<std::string_view> names;
    for (const auto& [key, screen] : wall.screens) {
        names.push_back(screen.name.view());
    }
    std::ranges::sort(names);
    std::vector<std::string> notes;
    for (std::size_t i = 1; i < names.size(); ++i) {
        const std::string_view address = addressIn(names[i - 1]);
        if (!address.empty() && names[i].starts_with(address)) {
            notes.push_back("screen " + std::string(names[i]) + " begins like " +
                            std::string(address) + ": one can be taken for the other");
        }
    }
    return notes;
}

/// The positions that a pointer can reach from `start` over edges.
std::set<std::uint32_t> reachable(const outInf& wall, std::uint32_t start) {
    std::set<std::uint32_t> found{start};
    std::vector<std::uint32_t> open{start};
    while (!open.empty()) {
        const std::uint32_t x = gridColumn(open.back()), y = gridRow(open.back());
        open.pop_back();
        for (const auto& [nextX, nextY] :
             {std::pair{x + 1, y}, {x - 1, y}, {x, y + 1}, {x, y - 1}}) {
            const std::uint32_t next = gridKey(nextX, nextY);
            if (nextX <= kGridLimit && nextY <= kGridLimit && wall.screens.contains(next) &&
                found.insert(next).second) {
                open.push_back(next);
            }
        }
    }
    return found;
}

/// Screens that the pointer cannot reach, and those without a box where it arrives.
std::vector<std::string> screensApart(const outInf& wall, std::string_view console) {
    std::vector<std::string> notes;
    const auto place = screenOf(wall, console);
    const auto first = place == wall.screens.end() ? wall.screens.begin() : place;
    const auto near =
        first == wall.screens.end() ? std::set<std::uint32_t>{} : reachable(wall, first->first);
    for (const auto& [key, screen] : wall.screens) {
        if (!near.contains(key)) {
            notes.push_back("screen " + at(key) + " is behind a hole: no edge leads there");
        }
        const auto corner = screen.cells.find(0);
        if (corner == screen.cells.end() || !isBox(corner->second.name.view())) {
            notes.push_back("screen " + at(key) + " shows no box in cell 0,0");
        }
    }
    return notes;
}

}  // namespace

WallNotes describe(const LoadedWall& loaded, std::string_view console) {
    const std::size_t used = usedLines(loaded);
    const std::vector<Unkept> unkept = allUnkept(loaded, used);
    const std::string unused = unusedLines(loaded, used);
    std::vector<std::string> dropped;
    for (const Unkept& entry : unkept) {
        if (!entry.reason.empty()) {
            dropped.push_back(entry.text + ": " + entry.reason);
        }
    }
    WallNotes notes{{summary(loaded, console)}, lostBy(unused, unkept)};
    append(notes.lines, "not taken: ", dropped);
    append(notes.lines,
           "note: ", unused.empty() ? std::vector<std::string>{} : std::vector{unused});
    append(notes.lines, "note: ", sharedRecords(loaded.wall));
    append(notes.lines, "note: ", alikeScreens(loaded.wall));
    append(notes.lines, "note: ", screensApart(loaded.wall, console));
    return notes;
}
