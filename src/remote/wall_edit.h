#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/wall_records.h"
#include "remote/map_text.h"

/// A wall while it is edited: it is read from its text aside and published in one step, its last
/// entry's port with it. Each function belongs to the thread that holds the draft.
struct WallDraft {
    outInf wall;
    std::optional<std::int32_t> port;  ///< of the entry parsed last
};

/// The shared wall as it stands, to be edited.
WallDraft draftOfWall();

/// Puts the draft in the place of the shared wall and sets the boxes' port.
void publish(WallDraft draft);

/// Reads one entry: x, y and name, and the port: its fourth field, 80 without one or when it is no
/// port. Prints the port that is given. Returns 1.
int spltLocationIp(const std::string& line, int* x, int* y, std::string* name, std::int32_t* port);

/// One entry of the draft's text; its port becomes the draft's.
MapEntry takeEntry(WallDraft& draft, const std::string& text);

/// Adds an output screen; an existing one keeps its name and cells. Returns its key, or nothing
/// with one line printed.
std::optional<unsigned> addScreen(WallDraft& draft, const std::string& entry);

/// Adds a cell to the screen `outKey`; an existing cell keeps its name. False, with one line
/// printed, when the entry or the screen is not usable.
bool addCell(WallDraft& draft, const std::string& entry, unsigned outKey);

/// The cell that every screen has, unless it was defined: "no input".
inline constexpr const char* kNoInputCell = "0,0,0.0.0.0";
