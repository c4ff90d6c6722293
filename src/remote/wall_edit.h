#pragma once

#include <optional>
#include <string>

#include "base/guarded.h"
#include "base/wall_records.h"
#include "remote/map_text.h"

/// Adding entries to a wall, which may be the shared one or one still being built.

/// Parses an entry and sets inputPort from it.
MapEntry takeMapEntry(const std::string& entry);

/// Adds an output screen; an existing one keeps its name and cells. Returns its key, or nothing
/// with one line printed.
std::optional<unsigned> addScreen(Guarded<outInf>& wall, const std::string& entry);

/// Adds a cell to the screen `outKey`; an existing cell keeps its name. False, with one line
/// printed, when the entry or the screen is not usable.
bool addCell(Guarded<outInf>& wall, const std::string& entry, unsigned outKey);

/// The cell that every screen has, unless it was defined: "no input".
inline constexpr const char* kNoInputCell = "0,0,0.0.0.0";
