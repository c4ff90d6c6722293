#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <set>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "remote/console_state.h"
#include "remote/wire.h"

/// Key presses and releases into the 11-byte keyboard report, and a report back into a hotkey text.
/// The report carries one key at a time: a second press replaces the first, any release empties it.
///
///   Shift down   modifiers 02, key 00        A down   key 04        A up   key 00
///   A down       modifiers 02, key 04        B down   key 05        B up   key 00
///   A up         modifiers 02, key 00        A up     key 00, though B is down

/// The report with the name of the last key, and the lock byte that only the OSD gets.
struct KeyReport {
    wire::OsdKeyboard bytes{};
    std::array<char, 30> keyName{};

    /// The 11 bytes that go to input boxes.
    std::span<const std::uint8_t> forBox() const {
        return std::span(bytes).first<wire::Keyboard{}.size()>();
    }
    std::uint8_t modifiers() const { return bytes[wire::kModifiersAt]; }
    std::uint8_t firstKey() const { return bytes[wire::kFirstKeyAt]; }
    std::string_view name() const { return keyName.data(); }
    void clear() {
        bytes.fill(0);
        keyName.fill('\0');
    }
};

/// The keys that this listener saw pressed and not yet released.
///
///   device 0 A down, device 1 A down   2        device 0 A up   1        device 2 A up   1
class HeldKeys {
 public:
    void press(std::size_t device, std::uint16_t code) { held_.emplace(device, code); }
    void release(std::size_t device, std::uint16_t code) { held_.erase({device, code}); }
    std::size_t count() const { return held_.size(); }
    /// The codes that are down at one device.
    std::vector<std::uint16_t> of(std::size_t device) const {
        std::vector<std::uint16_t> codes;
        for (const auto& [holder, code] : held_) {
            if (holder == device) {
                codes.push_back(code);
            }
        }
        return codes;
    }

 private:
    std::set<std::pair<std::size_t, std::uint16_t>> held_;
};

/// Takes the press of evdev `code` into the 11-byte `report` and writes the key's name to `name`
/// (17 bytes or more); a lock key toggles its state in `lights`. Returns 11, or 0 for a code that
/// is not handled: `name` and all but the header then stay. Input thread.
int OnKeyDown(Lights& lights, int code, std::uint8_t* report, char, char, char, char* name);

/// What a release does.
struct KeyUp {
    int length = 0;              ///< 11 when the release is to be sent, 0 when it is dropped
    const char* line = nullptr;  ///< to be printed, for a modifier
};
/// Takes the release of evdev `code` out of the 11-byte `report`; with `everything` no release is
/// dropped, and right Win clears its own bit. Pure.
KeyUp takeKeyUp(int code, std::uint8_t* report, bool everything = false);

/// The same, with its line printed. Returns the length.
int OnKeyUp(int code, std::uint8_t* report, char);

/// Appends the hotkey text of the 11-byte `report` to the NUL-terminated `text` (64 bytes). Returns
/// 1. Pure.
int GetChar(const std::uint8_t* report, char* text);
