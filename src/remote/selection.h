#pragma once

#include <cstdint>

#include "remote/console_state.h"

/// Selecting the input box of a cell of the current screen: the listener's start, the edges, the
/// arrows and the commands. Input and control threads.

/// The in key of the current cell.
unsigned currentInKey();

/// In place of an in key: the current cell, looked up in the step that gives its box control.
inline constexpr unsigned kCellInUse = 0xFFFFFFFF;

/// Gives control to the box of cell `inKey` of the current screen, in one step: until then
/// everything goes to the box before it. Its address goes to `ipOut` (20 bytes, or null). Returns
/// 1; 0 with one line when the screen has no such cell, then no box has control and `ipOut` is
/// empty. Should another thread enter another cell meanwhile, that cell's box is taken.
int GetCurInip(unsigned inKey, char* ipOut);

/// The decimal number after the first "-" of a map name, 0 to 65535; 0 when there is none, with one
/// line when it is no port offset. Any thread.
int get_in_port(const char* name);

/// A command puts control on screen `x`,`y` of the wall, cell 0,0, with the pointer at 100,100;
/// lights and query of the new box are done inside. Returns 1, or 0 with one line when the wall has
/// no such place; keys and absolute buttons are let go of in both cases.
int MouseTo(ConsoleState& state, int x, int y);
