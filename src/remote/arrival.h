#pragma once

#include <cstdint>
#include <optional>

#include "remote/direction.h"

/// Where the pointer comes in when control crosses from one output screen to another. Pure.

/// The screen that loses or gains control.
struct ScreenShape {
    bool single = false;
    Count cells;  ///< columns and rows
    Count place;  ///< on the wall
};

/// Cell and pointer.
struct Place {
    Count cell;
    Position pointer;

    friend bool operator==(const Place&, const Place&) = default;
};

/// Which way `to` lies from `from`: in the same column up or down, in the same row left or right;
/// nothing otherwise.
std::optional<Direction> directionTo(const ScreenShape& from, const ScreenShape& to);

/// Arrival by the plain rule: the pointer on the facing edge (an extent of `picture`, or 0,
/// itself), the kept coordinate and cell as they were, cell (0,0) on a single screen. Nothing for
/// no direction.
std::optional<Place> arriveAtEdge(const ScreenShape& from, const ScreenShape& to, const Place& at,
                                  const Position& picture);

/// Arrival with the kept axis converted between split and single screens: a cell measures 1023
/// units divided by the screen's columns (on both axes), 1023 on a single screen. No direction
/// keeps the pointer and gives cell (0,0).
Place arriveScaled(const ScreenShape& from, const ScreenShape& to, const Place& at,
                   const Position& picture);
