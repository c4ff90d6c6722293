#pragma once

namespace rig {

/// The golden script of the demonstration: keys, pointer, the wall, the OSD and the commands, on
/// the usual board.
extern const char* const kTour;

}  // namespace rig
