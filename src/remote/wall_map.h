#pragma once

#include <string>

/// The wall map: built from its text, changed on command, written back to the settings. Control
/// thread, and main before start-up's threads exist. Other threads see either the old or the new
/// wall, never one half built.

/// Adds one entry to the wall: an output screen, or a cell of the screen `outKey`. A text that is
/// parsed sets inputPort to the fourth field of its last entry, or to 80. Returns the screen's out
/// key, 0 on error.
unsigned createMap(const std::string& entry, bool isOut, unsigned outKey);

/// Adds a whole line: a screen and its cells, then the cell (0,0) "0.0.0.0" unless the line had
/// one. The cells of a refused screen are left out. Returns 1.
int CreatOutIpMap(const std::string& line);

/// Replaces the whole wall (`kind` begins with "out") or the cells of one screen ("in"), then
/// saves. For "in" the screen's key is stored in `outKey` (may be null). Returns 1, or 0 on error.
int osdIpMapSet(const std::string& data, const std::string& kind, unsigned* outKey);

/// Writes the wall to the settings and saves them. Returns 1.
int MapToSv();

/// Parses a device-status query of at least 4 lines: `ipOut` receives the second line's value,
/// `addrOut` and `portOut` the third line's "address:port" if that line has 19 characters or more.
/// Each text buffer holds 20 bytes and receives at most 19 characters. Returns 1, or 0 when there
/// are fewer lines.
int get_seq_ip(const std::string& text, char* ipOut, char* addrOut, int* portOut);
