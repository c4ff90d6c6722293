#include "remote/wire.h"

#include <algorithm>

namespace wire {

namespace {

constexpr std::array<FormRow, kForms> kFormRows{{
    // index, head, size, pressed, motion
    {0, {kMagic0, kMagic1, kKeyboardKind}, Keyboard{}.size(), kModifiersAt, 11, 0, 0},
    {1, {kMagic0, kMagic1, kAbsoluteKind}, Absolute{}.size(), kButtonsAt, 5, kWheelAt, 10},
    {2, {kMagic0, kMagic1, kRelativeKind}, Relative{}.size(), kRelButtonsAt, 4, kRelXAt, 7},
    {3, {kUserMagic, 0x00, 0x01}, UserKeyboard{}.size(), kUserModifiersAt, 12, 0, 0},
    {4, {kUserMagic, 0x00, 0x02}, UserPointer{}.size(), kButtonsAt, 5, kUserWheelAt, 11},
}};

}  // namespace

const FormRow* formOf(std::span<const std::uint8_t> bytes) {
    const auto* const row = std::find_if(kFormRows.begin(), kFormRows.end(), [&](const FormRow& r) {
        return bytes.size() == r.size && std::equal(r.head.begin(), r.head.end(), bytes.begin());
    });
    return row == kFormRows.end() ? nullptr : row;
}

bool isDown(const FormRow& form, std::span<const std::uint8_t> bytes) {
    const auto pressed = bytes.subspan(form.pressedAt, form.pressedEnd - form.pressedAt);
    return std::any_of(pressed.begin(), pressed.end(), [](std::uint8_t byte) { return byte != 0; });
}

void letGo(const FormRow& form, std::span<std::uint8_t> bytes) {
    std::ranges::fill(bytes.subspan(form.pressedAt, form.pressedEnd - form.pressedAt),
                      std::uint8_t{0});
    std::ranges::fill(bytes.subspan(form.motionAt, form.motionEnd - form.motionAt),
                      std::uint8_t{0});
}

Absolute absolute(std::uint8_t buttons, std::int32_t x, std::int32_t y, std::uint8_t wheel) {
    Absolute report{};
    putAbsoluteHeader(report.data());
    report[kButtonsAt] = buttons;
    put16(report.data(), kXAt, x);
    put16(report.data(), kYAt, y);
    report[kWheelAt] = wheel;
    return report;
}

Relative relative(std::uint8_t buttons, std::int32_t dx, std::int32_t dy, std::uint8_t wheel) {
    return {kMagic0, kMagic1, kRelativeKind, buttons, low8(dx), low8(dy), wheel};
}

Keyboard keyboard(std::uint8_t modifiers, std::uint8_t usage) {
    Keyboard report = kKeyRelease;
    report[kModifiersAt] = modifiers;
    report[kFirstKeyAt] = usage;
    return report;
}

UserPointer userPointer(std::uint8_t buttons, std::int32_t x, std::int32_t y, std::uint8_t wheel) {
    UserPointer report{kUserMagic, 0x00, 0x02, 0x07, buttons};
    const auto scaled = [](std::int32_t value, int factor) {
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(value) *
                                         static_cast<std::uint32_t>(factor));
    };
    put16(report.data(), kXAt, scaled(x, kUserScaleX));
    put16(report.data(), kYAt, scaled(y, kUserScaleY));
    report[kUserWheelAt] = wheel;
    report[kUserWheelAt + 1] = wheel;
    return report;
}

UserKeyboard userKeyboard(std::uint8_t modifiers, std::uint8_t usage) {
    UserKeyboard report{kUserMagic, 0x00, 0x01, 0x08};
    report[kUserModifiersAt] = modifiers;
    report[kUserKeyAt] = usage;
    return report;
}

std::string lights(bool capsLock, bool numLock) {
    std::string text = "out&capslock=";
    text += capsLock ? "on#" : "off#";
    text += "numlock=";
    text += numLock ? "on" : "off";
    return text;
}

}  // namespace wire
