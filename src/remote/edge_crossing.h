#pragma once

#include "remote/console_state.h"
#include "remote/direction.h"

/// Control crosses an edge: from cell to cell, at the screen's border to the neighbouring screen.
/// Input thread.

/// Releases the box that loses control, selects the neighbour, brings it up to date, tells the OSD
/// and puts the pointer on the edge where it comes in. At the border of the wall one line is
/// printed and the pointer held at the edge. Returns 1; at the border what the direction's row
/// says.
unsigned cross(ConsoleState& state, Direction direction);

/// The same by key: the pointer ends 100 pixels inside the picture of the box then in control.
void crossByArrow(ConsoleState& state, Direction direction);
