#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace words {

/// Type and code of an event, as in linux/input-event-codes.h.
struct EventCode {
    std::uint16_t type = 0;
    std::uint16_t code = 0;
};

/// The event with that name ("KEY_A", "BTN_LEFT", "REL_WHEEL", "SYN"); nothing when there is none.
std::optional<EventCode> eventCode(std::string_view name);
/// Its name; empty for one that has none here.
std::string eventName(EventCode event);

/// The key that a USB HID keyboard usage means, as the kernel's name without "KEY_" ("A",
/// "LEFTBRACE"); "usage 0xNN" for a usage that means none.
///
/// Source: the kernel's own translation of the HID Usage Tables' keyboard page (hid-input.c), read
/// from usage to key. It shares nothing with the table that the daemon sends by.
std::string usageName(std::uint8_t usage);

/// The names of the modifier bits of a keyboard report, joined with "+"; empty for none.
std::string modifierNames(std::uint8_t bits);

}  // namespace words
