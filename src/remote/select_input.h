#pragma once

#include "app/base/inputevent.h"

/// Selecting the input box of the current cell: shared by the listener's start, the edge crossings
/// and the commands. Input and control threads.

/// The in key of the current cell.
unsigned currentInKey();

/// Clears curIp and fills it with the box of the current cell. False when the cell has none; curIp
/// then stays empty and nothing is sent.
bool selectInputOfCell(inputevent_& events);

/// Brings a newly selected box's lights and this console's idea of its picture up to date. Does
/// nothing for "0.0.0.0" and for user-list boxes.
void bringBoxUpToDate(inputevent_& events);

/// Asks the current box for its picture with the query-in-progress byte cleared, then sets it.
void queryBox(inputevent_& events);

/// If `name` holds "-": stores the decimal number after the first one in port_add. A number that is
/// no port offset (0 to 65535) counts as 0, with one line. Returns port_add.
int get_in_port(const char* name);
