#include "input/key_report.h"

#include <linux/input-event-codes.h>

#include <cstdio>
#include <cstring>

#include "input/key_table.h"

namespace {

constexpr int kReportLength = 11;

void toggle(Flag& flag) { flag = static_cast<std::uint8_t>(flag == 0); }

struct ModifierRelease {
    int code;
    std::uint8_t cleared;
    const char* line;
};

// Right Win clears left Win's bit, so its own stays until the report is cleared.
constexpr ModifierRelease kModifierReleases[] = {
    {KEY_LEFTCTRL, 0x01, "leftctrl keyup"},   {KEY_LEFTSHIFT, 0x02, "leftshift keyup"},
    {KEY_LEFTALT, 0x04, "leftalt keyup"},     {KEY_LEFTMETA, 0x08, "leftmeta keyup"},
    {KEY_RIGHTCTRL, 0x10, "rightctrl keyup"}, {KEY_RIGHTSHIFT, 0x20, "rightshift keyup"},
    {KEY_RIGHTALT, 0x40, "rightalt keyup"},   {KEY_RIGHTMETA, 0x08, "rightmeta keyup"},
};

void append(char* text, std::string_view part) {
    char* end = text + std::strlen(text);
    end[part.copy(end, part.size())] = '\0';
}

}  // namespace

int OnKeyDown(Lights& lights, int code, std::uint8_t* report, char, char, char, char* name) {
    wire::putKeyboardHeader(report);
    const KeyRow* key = findKey(code);
    if (key == nullptr) {
        return 0;
    }
    if (key->release == KeyRelease::kModifier) {
        report[wire::kModifiersAt] =
            static_cast<std::uint8_t>(report[wire::kModifiersAt] | key->value);
    } else {
        report[wire::kFirstKeyAt] = key->value;
    }
    if (code == KEY_CAPSLOCK) {
        toggle(lights.capsLockOn);
    } else if (code == KEY_NUMLOCK) {
        toggle(lights.numLockOn);
    }
    std::memcpy(name, key->name.data(), key->name.size());
    name[key->name.size()] = '\0';
    return kReportLength;
}

KeyUp takeKeyUp(int code, std::uint8_t* report, bool everything) {
    wire::putKeyboardHeader(report);
    const KeyRow* key = everything || code <= kLastReleasedCode ? findKey(code) : nullptr;
    if (key == nullptr || (key->release == KeyRelease::kDropped && !everything)) {
        return {};
    }
    if (key->release != KeyRelease::kModifier) {
        report[wire::kFirstKeyAt] = 0;
        return {kReportLength, nullptr};
    }
    for (const ModifierRelease& row : kModifierReleases) {
        if (row.code == code) {
            const std::uint8_t cleared = everything ? key->value : row.cleared;
            report[wire::kModifiersAt] =
                static_cast<std::uint8_t>(report[wire::kModifiersAt] & ~cleared);
            return {kReportLength, row.line};
        }
    }
    return {kReportLength, nullptr};
}

int OnKeyUp(int code, std::uint8_t* report, char) {
    const KeyUp up = takeKeyUp(code, report);
    if (up.line != nullptr) {
        std::puts(up.line);
    }
    return up.length;
}

int GetChar(const std::uint8_t* report, char* text) {
    append(text, hotkeyPrefixOf(report[wire::kModifiersAt]));
    append(text, hotkeyNameOf(report[wire::kFirstKeyAt]));
    return 1;
}
