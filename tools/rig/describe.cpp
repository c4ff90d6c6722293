#include "rig/describe.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <optional>
#include <string_view>

#include "remote/wire.h"
#include "rig/keys.h"

namespace rig {
namespace {

using Bytes = std::span<const std::uint8_t>;

bool startsWith(Bytes bytes, std::initializer_list<std::uint8_t> head) {
    return bytes.size() >= head.size() && std::equal(head.begin(), head.end(), bytes.begin());
}

[[gnu::format(printf, 1, 2)]] std::string print(const char* format, ...) {
    std::array<char, 64> text{};
    va_list arguments;
    va_start(arguments, format);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): va_start stands just above
    std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    return text.data();
}

std::string keysText(std::uint8_t modifiers, Bytes usages) {
    const std::string held = modifierNames(modifiers);
    std::string names;
    for (const std::uint8_t usage : usages) {
        if (usage != 0) {
            names += names.empty() ? "" : " ";
            names += usageName(usage);
        }
    }
    if (names.empty()) {
        return held.empty() ? "keys up" : "modifiers " + held;
    }
    return "key down " + (held.empty() ? "" : held + "+") + names;
}

std::string locksText(std::uint8_t locks) {
    constexpr const char* kTexts[] = {"none", "caps", "num", "caps+num"};
    return locks < 4 ? kTexts[locks] : print("0x%02X", locks);
}

std::string buttonsText(std::uint8_t buttons) {
    struct Row {
        std::uint8_t bit;
        const char* name;
    };
    constexpr Row kRows[] = {
        {wire::kLeft, "left"}, {wire::kRight, "right"}, {wire::kMiddle, "middle"}};
    std::string names;
    for (const Row& row : kRows) {
        if ((buttons & row.bit) != 0) {
            names += names.empty() ? "" : "+";
            names += row.name;
        }
    }
    if ((buttons & ~(wire::kLeft | wire::kRight | wire::kMiddle)) != 0) {
        names += print("%s0x%02X", names.empty() ? "" : "+", buttons);
    }
    return " buttons " + (names.empty() ? "none" : names);
}

std::string wheelText(std::uint8_t wheel) {
    return wheel == 0 ? "" : print(" wheel %d", static_cast<std::int8_t>(wheel));
}

std::optional<std::string> keyboardText(Bytes bytes) {
    if (!startsWith(bytes, {wire::kMagic0, wire::kMagic1, wire::kKeyboardKind})) {
        return std::nullopt;
    }
    const bool osd = bytes.size() == wire::OsdKeyboard{}.size();
    if ((!osd && bytes.size() != wire::Keyboard{}.size()) || bytes[wire::kModifiersAt + 1] != 0) {
        return std::nullopt;
    }
    std::string text =
        keysText(bytes[wire::kModifiersAt],
                 bytes.subspan(wire::kFirstKeyAt, wire::kLocksAt - wire::kFirstKeyAt));
    return osd ? text + " locks " + locksText(bytes[wire::kLocksAt]) : text;
}

std::optional<std::string> pointerText(Bytes bytes) {
    if (bytes.size() == wire::Absolute{}.size() &&
        startsWith(bytes, {wire::kMagic0, wire::kMagic1, wire::kAbsoluteKind, 0x01})) {
        return print("pointer %d,%d", wire::get16(bytes.data(), wire::kXAt),
                     wire::get16(bytes.data(), wire::kYAt)) +
               buttonsText(bytes[wire::kButtonsAt]) + wheelText(bytes[wire::kWheelAt]);
    }
    if (bytes.size() == wire::Relative{}.size() &&
        startsWith(bytes, {wire::kMagic0, wire::kMagic1, wire::kRelativeKind})) {
        return print("motion %+d,%+d", static_cast<std::int8_t>(bytes[wire::kRelXAt]),
                     static_cast<std::int8_t>(bytes[wire::kRelYAt])) +
               buttonsText(bytes[wire::kRelButtonsAt]) + wheelText(bytes[wire::kRelWheelAt]);
    }
    return std::nullopt;
}

std::optional<std::string> userText(Bytes bytes) {
    if (bytes.size() == wire::UserPointer{}.size() &&
        startsWith(bytes, {wire::kUserMagic, 0x00, 0x02, 0x07}) &&
        bytes[wire::kUserWheelAt] == bytes[wire::kUserWheelAt + 1]) {
        return print("user pointer %d,%d", wire::get16(bytes.data(), wire::kXAt),
                     wire::get16(bytes.data(), wire::kYAt)) +
               buttonsText(bytes[wire::kButtonsAt]) + wheelText(bytes[wire::kUserWheelAt]);
    }
    if (bytes.size() == wire::UserKeyboard{}.size() &&
        startsWith(bytes, {wire::kUserMagic, 0x00, 0x01, 0x08}) &&
        bytes[wire::kUserModifiersAt + 1] == 0) {
        return "user " + keysText(bytes[wire::kUserModifiersAt], bytes.subspan(wire::kUserKeyAt));
    }
    return std::nullopt;
}

std::optional<std::string> plainText(Bytes bytes) {
    std::size_t end = bytes.size();
    while (end > 0 && bytes[end - 1] == 0) {
        --end;
    }
    std::string text;
    for (const std::uint8_t byte : bytes.first(end)) {
        if (byte == '\n') {
            text += "\\n";
        } else if (byte >= 0x20 && byte < 0x7F) {
            text += static_cast<char>(byte);
        } else {
            return std::nullopt;
        }
    }
    if (end == 0) {
        return std::nullopt;
    }
    return end == bytes.size() ? text : text + print(" + %zu NUL", bytes.size() - end);
}

std::optional<std::string> lightsText(Bytes bytes) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    for (const char* caps : {"off", "on"}) {
        for (const char* num : {"off", "on"}) {
            if (text == print("out&capslock=%s#numlock=%s", caps, num)) {
                return print("lights caps %s num %s", caps, num);
            }
        }
    }
    return std::nullopt;
}

}  // namespace

std::string describe(Bytes bytes) {
    if (bytes.empty()) {
        return "empty";
    }
    for (const auto decode : {keyboardText, pointerText, userText, lightsText, plainText}) {
        if (auto text = decode(bytes)) {
            return *text;
        }
    }
    std::string text = "hex";
    for (const std::uint8_t byte : bytes) {
        text += print(" %02x", byte);
    }
    return text;
}

}  // namespace rig
