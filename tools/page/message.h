#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace page {

/// What a viewer's browser says.
struct Said {
    enum class Kind : std::uint8_t {
        kKey,      ///< code: evdev's; isDown
        kMove,     ///< x and y, in pixels
        kButton,   ///< code: evdev's; isDown
        kWheel,    ///< y: steps
        kBeat,     ///< it is still there
        kLetGo,    ///< nothing is held any more
        kDrive,    ///< it wants the console
        kCommand,  ///< text: to the console's command port
        kPlug,     ///< text: keyboard, mouse or touch
        kUnplug,
        kAnswer,  ///< where: a box; text: what it answers from now on, empty: nothing
        kUnfold,  ///< x: the number of a datagram
        kCheck,   ///< text: a settings file
        kApply,   ///< text: likewise
        kTour,
        kSave,
    };
    Kind kind = Kind::kBeat;
    std::uint16_t code = 0;
    bool isDown = false;
    int x = 0, y = 0;
    std::string text, where;
};

/// Reads one message, an object of JSON: {"t": "key", "code": "KeyA", "down": true}. Nothing for
/// whatever makes no sense. Pure.
std::optional<Said> parseSaid(std::string_view text);

/// The evdev code of a key by its name in a browser (KeyboardEvent.code, "KeyA", "ShiftLeft").
/// Source: the UI Events KeyboardEvent code values.
std::optional<std::uint16_t> keyOfCode(std::string_view code);

}  // namespace page
