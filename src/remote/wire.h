#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

/// The bytes that go to input boxes, output boxes and the OSD. Multi-byte numbers are
/// little-endian, there is no length prefix and no checksum: the datagram's length is the message's
/// length. All functions are pure and may be called from any thread. Tools decode with this same
/// header.
///
/// Pointer, absolute (10 bytes)           Pointer, relative (7 bytes)
///   0x57 0xAB 0x04 0x01                    0x57 0xAB 0x02
///   4     buttons                          3  buttons
///   5-6   x, low byte first                4  dx, low 8 bits
///   7-8   y, low byte first                5  dy, low 8 bits
///   9     wheel, low 8 bits                6  wheel, low 8 bits
///
/// Keyboard (11 bytes)                    Keyboard for the OSD (12 bytes)
///   0x57 0xAB 0x01                         the 11 bytes
///   3     modifiers                        11 locks: bit 0 Caps Lock, bit 1 Num Lock
///   4     reserved, 0
///   5-10  HID usages of held keys
///
/// User-list pointer (11 bytes)           User-list keyboard (12 bytes)
///   0x4B 0x00 0x02 0x07                    0x4B 0x00 0x01 0x08
///   4     buttons                          4     modifiers
///   5-6   x * 10, wrapping                 5     0
///   7-8   y * 18, wrapping                 6     HID usage of the first key
///   9     wheel                            7-11  0
///   10    wheel again
///
/// Lights: text "out&capslock=on#numlock=off" (each "on" or "off"), without a NUL.
namespace wire {

using Absolute = std::array<std::uint8_t, 10>;
using Relative = std::array<std::uint8_t, 7>;
using Keyboard = std::array<std::uint8_t, 11>;
using OsdKeyboard = std::array<std::uint8_t, 12>;
using UserPointer = std::array<std::uint8_t, 11>;
using UserKeyboard = std::array<std::uint8_t, 12>;

inline constexpr std::uint8_t kMagic0 = 0x57;
inline constexpr std::uint8_t kMagic1 = 0xAB;
inline constexpr std::uint8_t kKeyboardKind = 0x01;
inline constexpr std::uint8_t kRelativeKind = 0x02;
inline constexpr std::uint8_t kAbsoluteKind = 0x04;
inline constexpr std::uint8_t kUserMagic = 0x4B;

/// Button bits, the same in every pointer format.
inline constexpr std::uint8_t kLeft = 0x01;  ///< also touch contact
inline constexpr std::uint8_t kRight = 0x02;
inline constexpr std::uint8_t kMiddle = 0x04;

/// Offsets in the absolute report.
inline constexpr std::size_t kButtonsAt = 4;
inline constexpr std::size_t kXAt = 5;
inline constexpr std::size_t kYAt = 7;
inline constexpr std::size_t kWheelAt = 9;
/// Offsets in the keyboard report.
inline constexpr std::size_t kModifiersAt = 3;
inline constexpr std::size_t kFirstKeyAt = 5;
inline constexpr std::size_t kLocksAt = 11;
/// Offsets in the relative report.
inline constexpr std::size_t kRelButtonsAt = 3;
inline constexpr std::size_t kRelXAt = 4;
inline constexpr std::size_t kRelYAt = 5;
inline constexpr std::size_t kRelWheelAt = 6;
/// Offsets in the user-list reports.
inline constexpr std::size_t kUserWheelAt = 9;
inline constexpr std::size_t kUserModifiersAt = 4;
inline constexpr std::size_t kUserKeyAt = 6;

/// Factors of the user-list pointer.
inline constexpr int kUserScaleX = 10;
inline constexpr int kUserScaleY = 18;

/// UDP ports that no setting changes.
inline constexpr int kUserPort = 2000;
inline constexpr int kMirrorPort = 41273;
inline constexpr int kQueryPort = 80;
inline constexpr int kOsdCommandPort = 41237;
inline constexpr int kOsdKeyPort = 41238;
/// Where reports and queries come from, and where queries come from that are made every 5 s.
inline constexpr int kReportSourcePort = 19357;
inline constexpr int kQuerySourcePort = 19358;

/// Puts the low 16 bits of `value` at `at`, low byte first.
constexpr void put16(std::uint8_t* bytes, std::size_t at, std::int32_t value) {
    const auto bits = static_cast<std::uint32_t>(value);
    bytes[at] = static_cast<std::uint8_t>(bits & 0xFFU);
    bytes[at + 1] = static_cast<std::uint8_t>((bits >> 8) & 0xFFU);
}

constexpr std::uint16_t get16(const std::uint8_t* bytes, std::size_t at) {
    return static_cast<std::uint16_t>(bytes[at] | bytes[at + 1] << 8);
}

constexpr std::uint8_t low8(std::int32_t value) {
    return static_cast<std::uint8_t>(static_cast<std::uint32_t>(value) & 0xFFU);
}

/// Writes the four header bytes of the absolute report and leaves the rest.
constexpr void putAbsoluteHeader(std::uint8_t* report) {
    report[0] = kMagic0;
    report[1] = kMagic1;
    report[2] = kAbsoluteKind;
    report[3] = 0x01;
}

/// Writes the three header bytes of the keyboard report and leaves the rest.
constexpr void putKeyboardHeader(std::uint8_t* report) {
    report[0] = kMagic0;
    report[1] = kMagic1;
    report[2] = kKeyboardKind;
}

Absolute absolute(std::uint8_t buttons, std::int32_t x, std::int32_t y, std::uint8_t wheel);
Relative relative(std::uint8_t buttons, std::int32_t dx, std::int32_t dy, std::uint8_t wheel);
Keyboard keyboard(std::uint8_t modifiers, std::uint8_t usage);
UserPointer userPointer(std::uint8_t buttons, std::int32_t x, std::int32_t y, std::uint8_t wheel);
UserKeyboard userKeyboard(std::uint8_t modifiers, std::uint8_t usage);
std::string lights(bool capsLock, bool numLock);

/// The five forms in which a box is told what is down.
inline constexpr std::size_t kForms = 5;
struct FormRow {
    std::size_t index;                  ///< 0 to kForms - 1
    std::array<std::uint8_t, 3> head;   ///< the first bytes
    std::size_t size;                   ///< of the whole report
    std::size_t pressedAt, pressedEnd;  ///< buttons, or modifiers and usages
    std::size_t motionAt, motionEnd;    ///< wheel and relative motion; an empty range: none
};

/// The form of a report; null for anything else.
const FormRow* formOf(std::span<const std::uint8_t> bytes);
/// True when a report of that form tells that something is pressed.
bool isDown(const FormRow& form, std::span<const std::uint8_t> bytes);
/// Makes a report of that form tell that nothing is pressed and nothing moves.
void letGo(const FormRow& form, std::span<std::uint8_t> bytes);

/// All keys up: modifiers and usages 0.
inline constexpr Keyboard kKeyRelease{kMagic0, kMagic1, kKeyboardKind};
/// Left Ctrl held, no other key.
inline constexpr Keyboard kCtrlHeld{kMagic0, kMagic1, kKeyboardKind, 0x01};
/// Buttons up at (1023, 0), the template that every use places anew.
inline constexpr Absolute kPointerRelease{kMagic0, kMagic1, kAbsoluteKind, 0x01, 0x00, 0xFF, 0x03};

}  // namespace wire
