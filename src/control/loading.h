#pragma once

#include "config/software_config.h"
#include "remote/wall_notes.h"

/// What a start makes of the settings file. Main thread, before start-up's threads exist.

/// Reads, prints and writes back the settings, which adds missing keys with their defaults, and
/// sets the boxes' port. What would be lost is kept first and told. False when kUdpServerPort is no
/// port: 80 counts then.
bool loadSettings(SoftwareConfig& config);

/// Makes the wall of the map lines and prints them.
LoadedWall makeWall(const SoftwareConfig& config);

/// Makes the table of hotkeys that the settings hold. Why they are refused; empty when they are
/// not.
std::string loadHotkeys(const SoftwareConfig& config);
