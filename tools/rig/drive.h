#pragma once

#include "rig/world.h"

namespace rig {

/// Lets a person drive the world from the terminal: what is typed becomes key and pointer events.
/// Returns the program's exit status. The terminal is as before when it returns.
int drive(World& world, bool log);

/// A report for somebody who drives: its line, and what it says of the console's state (an observer
/// of the world that is driven). Any thread.
void showDriven(const std::string& name, const Report& report);

/// Prints one line, whole, from any thread; right in a raw terminal too.
void show(const std::string& line);

}  // namespace rig
