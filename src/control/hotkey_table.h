#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/guarded.h"

/// The key combinations that belong to the OSD. An entry is a combination as a hotkey text spells
/// it (LEFTCTRL+F1), perhaps followed by ":" and text that is only carried along, whatever its
/// characters are.

struct HotkeyTable {
    static constexpr std::size_t kEntries = 159;
    static constexpr std::size_t kEntrySize = 64;

    std::uint32_t count = 0;
    std::array<std::array<char, kEntrySize>, kEntries> entries{};
};

/// Replaced whole, so a look-up never sees a table half replaced.
inline Guarded<HotkeyTable> hotkeyinfo_;

struct ParsedHotkeys {
    HotkeyTable table;
    std::string saved;    ///< the form that is stored in the settings
    std::string problem;  ///< why the list is refused; empty when it is not
};

/// Builds a table from an upper-case list separated by "#". From the OSD, entries come without
/// their leading "LEFT"; the saved form carries it. Pure.
ParsedHotkeys parseHotkeys(const std::string& list, bool fromOsd);

/// Turns `text` into upper case in place, replaces the table by it and saves it as a setting. A
/// list that does not fit, or that a line of the settings cannot hold, is refused whole with one
/// line; table and setting then stay. Returns 1. Control thread, and main before
/// start-up's threads exist.
std::uint32_t createHotKey(std::string& text, bool fromOsd);

struct HotkeyMatch {
    bool found = false;
    std::size_t index = 0;  ///< of the match; the number of entries when there is none
};

/// The first entry whose part before ":" begins `groupKey` (so F1's entry also matches F10 to F12).
/// Any thread.
HotkeyMatch findHotkey(const Guarded<HotkeyTable>& hotkeys, std::string_view groupKey);
