#pragma once

#include <cstdint>
#include <string_view>

/// The keys that the console forwards. Sources: evdev codes from the kernel's input-event-codes.h,
/// usages from the USB HID Usage Tables, Keyboard/Keypad page (0x07); the media and browser keys
/// from 0xE8 upward are the usages that the input boxes expect. All functions are pure; any thread.

enum class KeyRelease : std::uint8_t {
    kSent,      ///< the release is forwarded
    kDropped,   ///< the release is never forwarded
    kModifier,  ///< the value is a modifier bit, not a usage
};

struct KeyRow {
    std::uint8_t code = 0;  ///< evdev code; 0 in a row that stands for no key
    std::string_view name;
    std::uint8_t value = 0;  ///< HID usage, or the modifier's bit
    KeyRelease release = KeyRelease::kDropped;
};

inline constexpr int kFirstKeyCode = 1;
inline constexpr int kLastKeyCode = 194;
inline constexpr int kLastReleasedCode = 183;

/// The row of an evdev code, or null when the key is not handled.
const KeyRow* findKey(int code);

/// The name that a hotkey text gives to a usage; empty when it has none there.
std::string_view hotkeyNameOf(std::uint8_t usage);

/// The prefix that a hotkey text gives to a modifier byte, such as "LEFTCTRL+"; empty for bytes
/// that have none: no modifier, left mixed with right, three at once, Win with another, right Win.
std::string_view hotkeyPrefixOf(std::uint8_t modifiers);
