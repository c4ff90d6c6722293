#pragma once

#include <string>

/// Selecting the current output screen. currentInfo holds a private copy of it, so a later change
/// of the wall does not reach it until the next selection. Input and control threads, and main
/// before start-up's threads exist.

/// Selects the current screen: by name (`outKey` null: the first whose name begins with `name`), or
/// by key as a crossing from the current one. Returns 1, or 0 when there is no such screen.
int getCurrentInfo(const unsigned* outKey, const std::string& name);

/// Selects the current screen by key alone. With `flag` the pointer stays and the cell becomes
/// (0,0); without, both are those of an arrival over the edge that lies between. Returns 1, or 0
/// with one line when there is no such screen. Input and control threads.
int getCurrentInfo_(const unsigned* outKey, bool flag);
