#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace rig {

/// What a person's typing asks for.
struct Typed {
    enum class Kind { kKey, kMove, kClick, kWheel, kQuit };

    Kind kind = Kind::kKey;
    std::uint16_t code = 0;           ///< kKey: the key; kClick: the button
    std::vector<std::uint16_t> held;  ///< kKey: modifiers to hold meanwhile
    int dx = 0;                       ///< kMove, pixels
    int dy = 0;                       ///< kMove, pixels; kWheel, steps
};

/// Turns what a terminal in raw mode delivers in one read into actions. Pure. What no key of the
/// rig stands for is left out.
///
/// Letters, digits, punctuation (with Shift where it needs Shift), Enter, Tab, Backspace, Esc, F1
/// to F12, arrows, Home, End, Insert, Delete, Page Up and Down stand for themselves; Ctrl and Alt
/// with a letter likewise. Alt+arrow moves the pointer, with Shift besides far; Alt+Enter and
/// Alt+Backspace click left and right, Alt+Page Up and Down turn the wheel. Ctrl+C ends.
std::vector<Typed> typedKeys(std::string_view input);

}  // namespace rig
