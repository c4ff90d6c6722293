#pragma once

#include <cstddef>
#include <cstdint>

#include "input/listener.h"

/// What a key press means: the console's own rules first, then the box. Input thread only.

/// Carries out the press of evdev code `code` on keyboard `slot`. Returns the slot at which the
/// pass over the keyboards goes on.
std::size_t handlePress(ListenerState& state, std::size_t slot, std::uint16_t code);

/// A key while the OSD, preview or KVM mode is on.
void sendKeyToOsd(ListenerState& state);

/// Escape counting where no OSD runs on this console: the third quick press leaves every mode.
void countEscape(ListenerState& state);

/// A modifier and a key together: hotkeys, arrows that move control, or the box. Returns the slot
/// at which the pass goes on.
std::size_t handleGroupKey(ListenerState& state);

/// One key alone: counted taps, or the box.
void handleSingleKey(ListenerState& state);
