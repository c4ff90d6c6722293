#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/wall_records.h"

/// What an installer should know of the wall that the settings describe. Pure; any thread.

/// The map lines of the settings, as they stand there, and the wall that was made of them.
struct LoadedWall {
    std::vector<std::string> lines;  ///< line n of kOutIpmap; empty ones too
    bool isUsed = true;              ///< kOutNum is not 0
    outInf wall;
};

/// An entry that the wall has not, or that a save would not write as it stands.
struct UnkeptEntry {
    std::size_t line = 0;  ///< n of kOutIpmap
    std::string text;
    std::string reason;  ///< why it was not taken; empty when it was, though not all of its text
};

/// What is taken and may surprise.
struct WallNote {
    std::string text;
    std::optional<std::uint32_t> screen;  ///< key of the one that it is about
};

struct WallFindings {
    std::string summary;  ///< the wall and this console's place in it
    std::vector<UnkeptEntry> unkept;
    std::vector<std::size_t> unused;  ///< lines that nobody reads and that are not empty
    std::vector<WallNote> notes;
};

WallFindings examine(const LoadedWall& loaded, std::string_view console);

struct WallNotes {
    /// One line on the wall and on this console's place in it; one "not taken:" for each entry that
    /// was dropped, with the reason; one "note:" for what is taken and may surprise. At most 10 of
    /// a kind, then one that counts the rest.
    std::vector<std::string> lines;
    /// What the first save of the wall would not carry over of the map lines, in words; empty when
    /// it is nothing: entries that were not taken, their fourth fields, lines behind an empty one,
    /// all of them when kOutNum is 0.
    std::string lost;
};

/// The same in words.
WallNotes describe(const LoadedWall& loaded, std::string_view console);
