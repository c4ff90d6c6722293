#include "words/reports.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "remote/wire.h"
#include "words/hex.h"
#include "words/keys.h"

namespace words {
namespace {

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

int signedOf(std::uint8_t byte) { return byte < 0x80 ? byte : byte - 0x100; }

std::string wheelText(std::uint8_t wheel) {
    return wheel == 0 ? "" : " wheel " + std::to_string(signedOf(wheel));
}

std::string signedText(std::uint8_t byte) {
    const int value = signedOf(byte);
    return (value < 0 ? "" : "+") + std::to_string(value);
}

/// A number behind the head; what it means is given only where the value does not say it.
struct Part {
    const char* name;
    std::size_t size = 1;
    bool isSigned = false;
    std::string (*meaning)(int value) = nullptr;
};

Field fieldOf(Bytes bytes, std::size_t at, const Part& part) {
    const int value = part.size == 2  ? wire::get16(bytes.data(), at)
                      : part.isSigned ? signedOf(bytes[at])
                                      : bytes[at];
    return {at, part.size, part.name, std::to_string(value),
            part.meaning == nullptr ? "" : part.meaning(value)};
}

template <std::string (*ofByte)(std::uint8_t)>
std::string meaningOf(int value) {
    return ofByte(static_cast<std::uint8_t>(value));
}

std::string keyName(std::uint8_t usage) { return usage == 0 ? "" : usageName(usage); }
std::string again(int /*value*/) { return "again"; }
std::string unscaledX(int value) {
    return "pointer x " + std::to_string(value / wire::kUserScaleX);
}
std::string unscaledY(int value) {
    return "pointer y " + std::to_string(value / wire::kUserScaleY);
}

std::string keyboardWords(Bytes bytes) {
    return keysText(bytes[wire::kModifiersAt],
                    bytes.subspan(wire::kFirstKeyAt, wire::kLocksAt - wire::kFirstKeyAt));
}

std::string osdKeyboardWords(Bytes bytes) {
    return keyboardWords(bytes) + " locks " + locksText(bytes[wire::kLocksAt]);
}

std::string userKeyboardWords(Bytes bytes) {
    return "user " + keysText(bytes[wire::kUserModifiersAt], bytes.subspan(wire::kUserKeyAt));
}

std::string pointerWords(Bytes bytes) {
    return "pointer " + std::to_string(wire::get16(bytes.data(), wire::kXAt)) + "," +
           std::to_string(wire::get16(bytes.data(), wire::kYAt)) + " buttons " +
           buttonsText(bytes[wire::kButtonsAt]) + wheelText(bytes[wire::kWheelAt]);
}

std::string userPointerWords(Bytes bytes) { return "user " + pointerWords(bytes); }

std::string motionWords(Bytes bytes) {
    return "motion " + signedText(bytes[wire::kRelXAt]) + "," + signedText(bytes[wire::kRelYAt]) +
           " buttons " + buttonsText(bytes[wire::kRelButtonsAt]) +
           wheelText(bytes[wire::kRelWheelAt]);
}

// The user-list pointer has the absolute one's places.
static_assert(wire::kUserWheelAt == wire::kWheelAt);

constexpr Part kModifiers{"modifiers", 1, false, meaningOf<modifierNames>};
constexpr Part kKey{"key", 1, false, meaningOf<keyName>};
constexpr Part kLocks{"locks", 1, false, meaningOf<locksText>};
constexpr Part kButtons{"buttons", 1, false, meaningOf<buttonsText>};
constexpr Part kWheel{"wheel", 1, true};

constexpr Part kKeyboardParts[] = {kModifiers, {"reserved"}, kKey, kKey,  kKey,
                                   kKey,       kKey,         kKey, kLocks};
constexpr Part kPointerParts[] = {kButtons, {"x", 2}, {"y", 2}, kWheel};
constexpr Part kUserPointerParts[] = {kButtons,
                                      {"x", 2, false, unscaledX},
                                      {"y", 2, false, unscaledY},
                                      kWheel,
                                      {"wheel", 1, true, again}};
constexpr Part kMotionParts[] = {kButtons, {"dx", 1, true}, {"dy", 1, true}, kWheel};

struct Form {
    const char* name;
    const char* meaning;  ///< of the head
    std::array<std::uint8_t, 4> head;
    std::size_t headSize, size;
    std::span<const Part> parts;  ///< behind the head, to the report's end
    std::string (*words)(Bytes);
    std::size_t zeroAt;   ///< a byte that is 0; 0: none
    std::size_t againAt;  ///< a byte that the next one repeats; 0: none
};

constexpr std::span<const Part> kKeys(kKeyboardParts, std::size(kKeyboardParts) - 1);
const Form kForms[] = {
    {"keyboard report",
     "keyboard",
     {wire::kMagic0, wire::kMagic1, wire::kKeyboardKind},
     3,
     wire::Keyboard{}.size(),
     kKeys,
     keyboardWords,
     wire::kModifiersAt + 1,
     0},
    {"keyboard report with locks",
     "keyboard",
     {wire::kMagic0, wire::kMagic1, wire::kKeyboardKind},
     3,
     wire::OsdKeyboard{}.size(),
     kKeyboardParts,
     osdKeyboardWords,
     wire::kModifiersAt + 1,
     0},
    {"pointer report",
     "pointer, absolute",
     {wire::kMagic0, wire::kMagic1, wire::kAbsoluteKind, 0x01},
     4,
     wire::Absolute{}.size(),
     kPointerParts,
     pointerWords,
     0,
     0},
    {"relative pointer report",
     "pointer, relative",
     {wire::kMagic0, wire::kMagic1, wire::kRelativeKind},
     3,
     wire::Relative{}.size(),
     kMotionParts,
     motionWords,
     0,
     0},
    {"user-list pointer report",
     "pointer of the user list",
     {wire::kUserMagic, 0x00, 0x02, 0x07},
     4,
     wire::UserPointer{}.size(),
     kUserPointerParts,
     userPointerWords,
     0,
     wire::kUserWheelAt},
    {"user-list keyboard report",
     "keyboard of the user list",
     {wire::kUserMagic, 0x00, 0x01, 0x08},
     4,
     wire::UserKeyboard{}.size(),
     kKeys,
     userKeyboardWords,
     wire::kUserModifiersAt + 1,
     0},
};

bool fits(const Form& form, Bytes bytes) {
    return bytes.size() == form.size &&
           std::equal(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(form.headSize),
                      form.head.begin()) &&
           (form.zeroAt == 0 || bytes[form.zeroAt] == 0) &&
           (form.againAt == 0 || bytes[form.againAt] == bytes[form.againAt + 1]);
}

}  // namespace

std::string hexByte(std::uint8_t byte) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    return {'0', 'x', kDigits[byte >> 4], kDigits[byte & 0xFU]};
}

bool decodeReport(Bytes bytes, Message& message) {
    const Form* const form = std::find_if(std::begin(kForms), std::end(kForms),
                                          [bytes](const Form& row) { return fits(row, bytes); });
    if (form == std::end(kForms)) {
        return false;
    }
    std::string head = hexText(bytes.first(form->headSize));
    std::ranges::replace(head, ' ', ':');
    message = {form->name, form->words(bytes), {{0, form->headSize, "head", head, form->meaning}}};
    std::size_t at = form->headSize;
    for (const Part& part : form->parts) {
        message.fields.push_back(fieldOf(bytes, at, part));
        at += message.fields.back().size;
    }
    return true;
}

std::vector<std::string> reportNames() {
    std::vector<std::string> names;
    for (const Form& form : kForms) {
        names.emplace_back(form.name);
    }
    return names;
}

}  // namespace words
