#include "words/reports.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "remote/wire.h"
#include "words/hex.h"
#include "words/keys.h"

namespace words {
namespace {

bool startsWith(Bytes bytes, std::initializer_list<std::uint8_t> head) {
    return bytes.size() >= head.size() && std::equal(head.begin(), head.end(), bytes.begin());
}

std::string joined(const std::string& left, const char* between, const std::string& right) {
    return left.empty() || right.empty() ? left + right : left + between + right;
}

std::string keyNames(Bytes usages) {
    std::string names;
    for (const std::uint8_t usage : usages) {
        names = joined(names, " ", usage == 0 ? "" : usageName(usage));
    }
    return names;
}

std::string keysText(std::uint8_t modifiers, Bytes usages) {
    const std::string held = modifierNames(modifiers);
    const std::string names = keyNames(usages);
    if (names.empty()) {
        return held.empty() ? "keys up" : "modifiers " + held;
    }
    return "key down " + joined(held, "+", names);
}

std::string locksText(std::uint8_t locks) {
    constexpr const char* kTexts[] = {"none", "caps", "num", "caps+num"};
    return locks < 4 ? kTexts[locks] : hexByte(locks);
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
        names = joined(names, "+", (buttons & row.bit) != 0 ? row.name : "");
    }
    if ((buttons & ~(wire::kLeft | wire::kRight | wire::kMiddle)) != 0) {
        names = joined(names, "+", hexByte(buttons));
    }
    return names.empty() ? "none" : names;
}

std::string wheelText(std::uint8_t wheel) {
    return wheel == 0 ? "" : " wheel " + std::to_string(static_cast<std::int8_t>(wheel));
}

/// Puts fields one behind the other, from a report's start to its end.
class Filler {
 public:
    Filler(Bytes bytes, Message& message) : bytes_(bytes), message_(message) {}

    void head(std::size_t size, const char* meaning) {
        std::string value = hexText(bytes_.subspan(at_, size));
        std::ranges::replace(value, ' ', ':');
        add(size, "head", value, meaning);
    }
    void byte(const char* name, const std::string& meaning = "") {
        add(1, name, std::to_string(now()), meaning);
    }
    void signedByte(const char* name, const std::string& meaning = "") {
        add(1, name, std::to_string(static_cast<std::int8_t>(now())), meaning);
    }
    void word(const char* name, const std::string& meaning = "") {
        add(2, name, std::to_string(wire::get16(bytes_.data(), at_)), meaning);
    }
    std::uint8_t now() const { return bytes_[at_]; }
    std::size_t at() const { return at_; }

 private:
    void add(std::size_t size, const char* name, const std::string& value,
             const std::string& meaning) {
        message_.fields.push_back({at_, size, name, value, meaning});
        at_ += size;
    }

    Bytes bytes_;
    Message& message_;
    std::size_t at_ = 0;
};

/// Modifiers, the reserved byte and the keys up to `end`, as the USB boot keyboard has them.
void fillKeys(Filler& put, std::size_t end) {
    put.byte("modifiers", modifierNames(put.now()));
    put.byte("reserved");
    while (put.at() < end) {
        put.byte("key", put.now() == 0 ? "" : usageName(put.now()));
    }
}

bool decodeKeyboard(Bytes bytes, Message& message) {
    if (!startsWith(bytes, {wire::kMagic0, wire::kMagic1, wire::kKeyboardKind})) {
        return false;
    }
    const bool osd = bytes.size() == wire::OsdKeyboard{}.size();
    if ((!osd && bytes.size() != wire::Keyboard{}.size()) || bytes[wire::kModifiersAt + 1] != 0) {
        return false;
    }
    message.name = osd ? kOsdKeyboardName : kKeyboardName;
    message.words = keysText(bytes[wire::kModifiersAt],
                             bytes.subspan(wire::kFirstKeyAt, wire::kLocksAt - wire::kFirstKeyAt));
    Filler put(bytes, message);
    put.head(wire::kModifiersAt, "keyboard");
    fillKeys(put, wire::kLocksAt);
    if (osd) {
        const std::string locks = locksText(bytes[wire::kLocksAt]);
        message.words += " locks " + locks;
        put.byte("locks", locks);
    }
    return true;
}

bool decodePointer(Bytes bytes, Message& message) {
    if (bytes.size() != wire::Absolute{}.size() ||
        !startsWith(bytes, {wire::kMagic0, wire::kMagic1, wire::kAbsoluteKind, 0x01})) {
        return false;
    }
    const std::string buttons = buttonsText(bytes[wire::kButtonsAt]);
    message.name = kPointerName;
    message.words = "pointer " + std::to_string(wire::get16(bytes.data(), wire::kXAt)) + "," +
                    std::to_string(wire::get16(bytes.data(), wire::kYAt)) + " buttons " + buttons +
                    wheelText(bytes[wire::kWheelAt]);
    Filler put(bytes, message);
    put.head(wire::kButtonsAt, "pointer, absolute");
    put.byte("buttons", buttons);
    put.word("x");
    put.word("y");
    put.signedByte("wheel");
    return true;
}

std::string signedText(std::uint8_t byte) {
    const int value = static_cast<std::int8_t>(byte);
    return (value < 0 ? "" : "+") + std::to_string(value);
}

bool decodeMotion(Bytes bytes, Message& message) {
    if (bytes.size() != wire::Relative{}.size() ||
        !startsWith(bytes, {wire::kMagic0, wire::kMagic1, wire::kRelativeKind})) {
        return false;
    }
    const std::string buttons = buttonsText(bytes[wire::kRelButtonsAt]);
    message.name = kMotionName;
    message.words = "motion " + signedText(bytes[wire::kRelXAt]) + "," +
                    signedText(bytes[wire::kRelYAt]) + " buttons " + buttons +
                    wheelText(bytes[wire::kRelWheelAt]);
    Filler put(bytes, message);
    put.head(wire::kRelButtonsAt, "pointer, relative");
    put.byte("buttons", buttons);
    put.signedByte("dx");
    put.signedByte("dy");
    put.signedByte("wheel");
    return true;
}

bool decodeUserPointer(Bytes bytes, Message& message) {
    if (bytes.size() != wire::UserPointer{}.size() ||
        !startsWith(bytes, {wire::kUserMagic, 0x00, 0x02, 0x07}) ||
        bytes[wire::kUserWheelAt] != bytes[wire::kUserWheelAt + 1]) {
        return false;
    }
    const std::string buttons = buttonsText(bytes[wire::kButtonsAt]);
    const auto scaled = [&bytes](std::size_t at) { return wire::get16(bytes.data(), at); };
    message.name = kUserPointerName;
    message.words = "user pointer " + std::to_string(scaled(wire::kXAt)) + "," +
                    std::to_string(scaled(wire::kYAt)) + " buttons " + buttons +
                    wheelText(bytes[wire::kUserWheelAt]);
    Filler put(bytes, message);
    put.head(wire::kButtonsAt, "pointer of the user list");
    put.byte("buttons", buttons);
    put.word("x", "pointer x " + std::to_string(scaled(wire::kXAt) / wire::kUserScaleX));
    put.word("y", "pointer y " + std::to_string(scaled(wire::kYAt) / wire::kUserScaleY));
    put.signedByte("wheel");
    put.signedByte("wheel", "again");
    return true;
}

bool decodeUserKeyboard(Bytes bytes, Message& message) {
    if (bytes.size() != wire::UserKeyboard{}.size() ||
        !startsWith(bytes, {wire::kUserMagic, 0x00, 0x01, 0x08}) ||
        bytes[wire::kUserModifiersAt + 1] != 0) {
        return false;
    }
    message.name = kUserKeyboardName;
    message.words =
        "user " + keysText(bytes[wire::kUserModifiersAt], bytes.subspan(wire::kUserKeyAt));
    Filler put(bytes, message);
    put.head(wire::kUserModifiersAt, "keyboard of the user list");
    fillKeys(put, bytes.size());
    return true;
}

}  // namespace

std::string hexByte(std::uint8_t byte) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    return {'0', 'x', kDigits[byte >> 4], kDigits[byte & 0xFU]};
}

bool decodeReport(Bytes bytes, Message& message) {
    constexpr std::array kForms = {decodeKeyboard, decodePointer, decodeMotion, decodeUserPointer,
                                   decodeUserKeyboard};
    return std::any_of(kForms.begin(), kForms.end(),
                       [&](const auto decode) { return decode(bytes, message); });
}

}  // namespace words
