#pragma once

#include "remote/box_in_control.h"
#include "remote/console_state.h"

/// Bringing a box up to date: the lock lights of this keyboard, and what this console knows of its
/// picture. Input and control threads.

/// Reads the keyboard's lights into `lights`, tells them to the box in control when `send` is set,
/// and gives it 50 ms. Returns 1, or 0 with one line when no keyboard is known.
int syncLed(Lights& lights, bool send);

/// Asks the box in control for its picture with the query-in-progress byte cleared, then sets it;
/// a user-list box is not asked.
void queryBox(Duties& duties);

/// Lights and query of a newly selected box; nothing for "0.0.0.0" and for user-list boxes. Due
/// again when control moved on meanwhile.
void bringBoxUpToDate(ConsoleState& state);

/// True when lights and picture are due and may be brought up to date now.
bool resyncIsDue(const ConsoleState& state, const BoxInControl& box);

/// Does so. The duty is taken before the work, so one that comes meanwhile stays; it also stays due
/// when control moved on meanwhile.
void resync(ConsoleState& state);
