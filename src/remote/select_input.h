#pragma once

#include "base/inputevent.h"
#include "remote/send.h"

/// Selecting the input box of the current cell: shared by the listener's start, the edge crossings
/// and the commands. Input and control threads.

/// The in key of the current cell.
unsigned currentInKey();

/// Makes the box of the current cell the one in control, in one step: until then everything goes to
/// the box before it. False when the cell has none; curIp is then empty and nothing is sent. Should
/// another thread enter another cell meanwhile, that cell's box is taken.
bool selectInputOfCell();

/// Brings a newly selected box's lights and this console's idea of its picture up to date. Does
/// nothing for "0.0.0.0" and for user-list boxes.
void bringBoxUpToDate(inputevent_& events);

/// Asks the current box for its picture with the query-in-progress byte cleared, then sets it.
void queryBox(inputevent_& events);

/// selectInputOfCell for a command, which comes while the user may be typing: keys still held are
/// let go at the box that lost control.
bool selectInputByCommand(const inputevent_& events);

/// After control was taken from `before`: keys that the user still holds are let go there, for
/// their releases now go elsewhere.
void letGoOfLostBox(const inputevent_& events, const BoxTarget& before);

/// If `name` holds "-": stores the decimal number after the first one in port_add. A number that is
/// no port offset (0 to 65535) counts as 0, with one line. Returns port_add.
int get_in_port(const char* name);
