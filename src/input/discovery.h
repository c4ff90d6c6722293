#pragma once

#include "input/devices.h"
#include "input/listing.h"

/// Sorts the listed devices into the three lists. Supervisor thread, while no input thread runs.

/// Zeroes the three counts, then looks for a panel by name and sets the touch fields.
/// `restart` selects the lines and coordinates of a restart. `touchByName` is the state kept
/// between passes.
void recognisePanel(Devices& devices, const DeviceListing& listing, bool restart,
                    bool& touchByName);

/// Fills the mouse, keyboard and, when no panel was found, touch lists from the Handlers lines.
void classifyLines(Devices& devices, const DeviceListing& listing, bool touchByName);
