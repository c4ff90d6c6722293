#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace rig {

/// One datagram in one line of words. Pure; any thread.
///
///   key down LEFTCTRL+C        keyboard report with a key (several keys: "key down A B")
///   modifiers LEFTSHIFT        keyboard report with modifiers only
///   keys up                    keyboard report, all released
///   ... locks caps+num         the same three to the OSD, with the lock byte ("locks none")
///   user key down A            the same three to a user-list box
///   pointer 412,300 buttons left+right wheel -1     absolute report; no "wheel" when it is 0
///   motion +3,-2 buttons none                       relative report
///   user pointer 4120,5400 buttons none             user-list report, coordinates as sent
///   lights caps on num off
///   OSDSTART                   any other text; line feeds as \n, "+ 3 NUL" for zeroes at its end
///   hex 57 ab 09               anything else
std::string describe(std::span<const std::uint8_t> bytes);

}  // namespace rig
