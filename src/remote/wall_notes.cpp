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

bool isNumber(std::string_view field) {
    return field.find_first_not_of("0123456789", field.starts_with('-') ? 1 : 0) == field.npos;
}

/// Two numbers and an address: of everything else something is lost when it is written back.
bool isWhole(std::string_view text) {
    const std::size_t first = text.find(',');
    const std::size_t second = text.find(',', std::min(first, text.size() - 1) + 1);
    return second != text.npos && text.find(',', second + 1) == text.npos &&
           isNumber(text.substr(0, first)) && isNumber(text.substr(first + 1, second - first - 1));
}

/// Appends the entries of map line `n` that the wall has not as they are written.
void appendUnkept(const LoadedWall& loaded, std::size_t n, std::vector<UnkeptEntry>& unkept) {
    const outInf& wall = loaded.wall;
    const OutInfo* screen = nullptr;
    const std::vector<std::string> texts = mapEntries(loaded.lines[n]);
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
        if (!isWhole(texts[i]) || !reason.empty()) {
            unkept.push_back({n, texts[i], std::move(reason)});
        }
    }
}

/// The lines that make the wall: those before the first empty one.
std::size_t usedLines(const LoadedWall& loaded) {
    const auto end = std::ranges::find(loaded.lines, "");
    return loaded.isUsed ? static_cast<std::size_t>(end - loaded.lines.begin()) : 0;
}

std::vector<std::size_t> unusedLines(const LoadedWall& loaded, std::size_t used) {
    std::vector<std::size_t> unused;
    for (std::size_t n = used; n < loaded.lines.size(); ++n) {
        if (!loaded.lines[n].empty()) {
            unused.push_back(n);
        }
    }
    return unused;
}

/// Lines that nobody reads, in words.
std::string unusedText(const LoadedWall& loaded, const std::vector<std::size_t>& unused) {
    return unused.empty()
               ? ""
               : (loaded.isUsed ? "behind an empty map line, " : "kOutNum is 0, so ") +
                     linesAre("kOutIpmap" + std::to_string(unused[0]), unused.size()) + " not used";
}

/// What a save loses: the lines that nobody reads and the entries that it would not write so.
std::string lostBy(const std::string& unused, const std::vector<UnkeptEntry>& unkept) {
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

void noteSharedRecords(const outInf& wall, std::vector<WallNote>& notes) {
    std::map<unsigned, std::set<std::string>> records;
    for (const auto& [key, screen] : wall.screens) {
        for (const auto& [cell, box] : screen.cells) {
            const std::string address(addressIn(box.name.view()));
            records[GetViNum(address.c_str())].insert(address);
        }
    }
    for (const auto& [number, addresses] : records) {
        if (number != 0 && addresses.size() > 1) {
            notes.push_back({"boxes " + *addresses.begin() + " and " +
                                 *std::next(addresses.begin()) +
                                 " end alike and share one record of their picture",
                             {}});
        }
    }
}

/// Among sorted names, what one begins with stands before it.
void noteAlikeScreens(const outInf& wall, std::vector<WallNote>& notes) {
    std::vector<std::pair<std::string_view, std::uint32_t>> names;
    for (const auto& [key, screen] : wall.screens) {
        names.emplace_back(screen.name.view(), key);
    }
    std::ranges::sort(names);
    for (std::size_t i = 1; i < names.size(); ++i) {
        const std::string_view address = addressIn(names[i - 1].first);
        const auto& [name, key] = names[i];
        if (!address.empty() && name.starts_with(address)) {
            notes.push_back({"screen " + std::string(name) + " begins like " +
                                 std::string(address) + ": one can be taken for the other",
                             key});
        }
    }
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
void noteScreensApart(const outInf& wall, std::string_view console, std::vector<WallNote>& notes) {
    const auto place = screenOf(wall, console);
    const auto first = place == wall.screens.end() ? wall.screens.begin() : place;
    const auto near =
        first == wall.screens.end() ? std::set<std::uint32_t>{} : reachable(wall, first->first);
    for (const auto& [key, screen] : wall.screens) {
        if (!near.contains(key)) {
            notes.push_back({"screen " + at(key) + " is behind a hole: no edge leads there", key});
        }
        const auto corner = screen.cells.find(0);
        if (corner == screen.cells.end() || !isBox(corner->second.name.view())) {
            notes.push_back({"screen " + at(key) + " shows no box in cell 0,0", key});
        }
    }
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

}  // namespace

WallFindings examine(const LoadedWall& loaded, std::string_view console) {
    const std::size_t used = usedLines(loaded);
    WallFindings findings{summary(loaded, console), {}, unusedLines(loaded, used), {}};
    for (std::size_t n = 0; n < used; ++n) {
        appendUnkept(loaded, n, findings.unkept);
    }
    noteSharedRecords(loaded.wall, findings.notes);
    noteAlikeScreens(loaded.wall, findings.notes);
    noteScreensApart(loaded.wall, console, findings.notes);
    return findings;
}

WallNotes describe(const LoadedWall& loaded, std::string_view console) {
    const WallFindings findings = examine(loaded, console);
    std::vector<std::string> dropped, surprises;
    for (const UnkeptEntry& entry : findings.unkept) {
        if (!entry.reason.empty()) {
            dropped.push_back(entry.text + ": " + entry.reason);
        }
    }
    for (const WallNote& note : findings.notes) {
        surprises.push_back(note.text);
    }
    const std::string unused = unusedText(loaded, findings.unused);
    WallNotes notes{{findings.summary}, lostBy(unused, findings.unkept)};
    append(notes.lines, "not taken: ", dropped);
    append(notes.lines,
           "note: ", unused.empty() ? std::vector<std::string>{} : std::vector{unused});
    append(notes.lines, "note: ", surprises);
    return notes;
}
