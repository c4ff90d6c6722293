#pragma once

#include <string>

/// Reads "MTO:%d,%d"; numbers that do not parse leave `x` and `y` as they are. Pure.
void parseMouseTo(const std::string& text, int& x, int& y);
