#include "input/key_table.h"

#include <array>
#include <cstddef>

namespace {

constexpr auto kSent = KeyRelease::kSent;
constexpr auto kDropped = KeyRelease::kDropped;
constexpr auto kModifier = KeyRelease::kModifier;

// Notes
// (1) The right-hand modifiers carry the left-hand names, so that a hotkey reads the same typed on
//     either side; their bits still differ.
// (2) Names that differ from evdev's: NMLK, SCRLK, DOT, 102ND, PGUP, PGDN.
// (3) Usage 0x64 has no name in a hotkey text, although 102ND produces it.
constexpr KeyRow kRows[] = {
    // code, name, usage or modifier bit, release
    {1, "ESC", 0x29, kSent},
    {2, "1", 0x1E, kSent},
    {3, "2", 0x1F, kSent},
    {4, "3", 0x20, kSent},
    {5, "4", 0x21, kSent},
    {6, "5", 0x22, kSent},
    {7, "6", 0x23, kSent},
    {8, "7", 0x24, kSent},
    {9, "8", 0x25, kSent},
    {10, "9", 0x26, kSent},
    {11, "0", 0x27, kSent},
    {12, "MINUS", 0x2D, kSent},
    {13, "EQUAL", 0x2E, kSent},
    {14, "BACKSPACE", 0x2A, kSent},
    {15, "TAB", 0x2B, kSent},
    {16, "Q", 0x14, kSent},
    {17, "W", 0x1A, kSent},
    {18, "E", 0x08, kSent},
    {19, "R", 0x15, kSent},
    {20, "T", 0x17, kSent},
    {21, "Y", 0x1C, kSent},
    {22, "U", 0x18, kSent},
    {23, "I", 0x0C, kSent},
    {24, "O", 0x12, kSent},
    {25, "P", 0x13, kSent},
    {26, "LEFTBRACE", 0x2F, kSent},
    {27, "RIGHTBRACE", 0x30, kSent},
    {28, "ENTER", 0x28, kSent},
    {29, "LEFTCTRL", 0x01, kModifier},
    {30, "A", 0x04, kSent},
    {31, "S", 0x16, kSent},
    {32, "D", 0x07, kSent},
    {33, "F", 0x09, kSent},
    {34, "G", 0x0A, kSent},
    {35, "H", 0x0B, kSent},
    {36, "J", 0x0D, kSent},
    {37, "K", 0x0E, kSent},
    {38, "L", 0x0F, kSent},
    {39, "SEMICOLON", 0x33, kSent},
    {40, "APOSTROPHE", 0x34, kSent},
    {41, "GRAVE", 0x35, kSent},
    {42, "LEFTSHIFT", 0x02, kModifier},
    {43, "BACKSLASH", 0x31, kSent},
    {44, "Z", 0x1D, kSent},
    {45, "X", 0x1B, kSent},
    {46, "C", 0x06, kSent},
    {47, "V", 0x19, kSent},
    {48, "B", 0x05, kSent},
    {49, "N", 0x11, kSent},
    {50, "M", 0x10, kSent},
    {51, "COMMA", 0x36, kSent},
    {52, "DOT", 0x37, kSent},
    {53, "SLASH", 0x38, kSent},
    {54, "LEFTSHIFT", 0x20, kModifier},
    {55, "KPASTERISK", 0x55, kSent},
    {56, "LEFTALT", 0x04, kModifier},
    {57, "SPACE", 0x2C, kSent},
    {58, "CAPSLOCK", 0x39, kSent},
    {59, "F1", 0x3A, kSent},
    {60, "F2", 0x3B, kSent},
    {61, "F3", 0x3C, kSent},
    {62, "F4", 0x3D, kSent},
    {63, "F5", 0x3E, kSent},
    {64, "F6", 0x3F, kSent},
    {65, "F7", 0x40, kSent},
    {66, "F8", 0x41, kSent},
    {67, "F9", 0x42, kSent},
    {68, "F10", 0x43, kSent},
    {69, "NMLK", 0x53, kSent},
    {70, "SCRLK", 0x47, kSent},
    {71, "KP7", 0x5F, kSent},
    {72, "KP8", 0x60, kSent},
    {73, "KP9", 0x61, kSent},
    {74, "KPMINUS", 0x56, kSent},
    {75, "KP4", 0x5C, kSent},
    {76, "KP5", 0x5D, kSent},
    {77, "KP6", 0x5E, kSent},
    {78, "KPPLUS", 0x57, kSent},
    {79, "KP1", 0x59, kSent},
    {80, "KP2", 0x5A, kSent},
    {81, "KP3", 0x5B, kSent},
    {82, "KP0", 0x62, kSent},
    {83, "KPDOT", 0x63, kSent},
    {85, "ZENKAKUHANKAKU", 0x94, kDropped},
    {86, "102ND", 0x64, kDropped},
    {87, "F11", 0x44, kSent},
    {88, "F12", 0x45, kSent},
    {89, "RO", 0x87, kDropped},
    {90, "KATAKANA", 0x92, kDropped},
    {91, "HIRAGANA", 0x93, kDropped},
    {92, "HENKAN", 0x8A, kDropped},
    {93, "KATAKANAHIRAGANA", 0x88, kDropped},
    {94, "MUHENKAN", 0x8B, kDropped},
    {95, "KPJPCOMMA", 0x8C, kDropped},
    {96, "KPENTER", 0x58, kSent},
    {97, "LEFTCTRL", 0x10, kModifier},
    {98, "KPSLASH", 0x54, kSent},
    {99, "SYSRQ", 0x46, kSent},
    {100, "LEFTALT", 0x40, kModifier},
    {102, "HOME", 0x4A, kSent},
    {103, "UP", 0x52, kSent},
    {104, "PGUP", 0x4B, kSent},
    {105, "LEFT", 0x50, kSent},
    {106, "RIGHT", 0x4F, kSent},
    {107, "END", 0x4D, kSent},
    {108, "DOWN", 0x51, kSent},
    {109, "PGDN", 0x4E, kSent},
    {110, "INSERT", 0x49, kSent},
    {111, "DELETE", 0x4C, kSent},
    {113, "MUTE", 0x7F, kDropped},
    {114, "VOLUMEDOWN", 0x81, kDropped},
    {115, "VOLUMEUP", 0x80, kDropped},
    {116, "POWER", 0x66, kDropped},
    {117, "KPEQUAL", 0x67, kDropped},
    {119, "PAUSE", 0x48, kSent},
    {121, "KPCOMMA", 0x85, kDropped},
    {122, "HANGEUL", 0x90, kDropped},
    {123, "HANJA", 0x91, kDropped},
    {124, "YEN", 0x89, kDropped},
    {125, "WIN", 0x08, kModifier},
    {126, "WIN", 0x80, kModifier},
    {127, "COMPOSE", 0x65, kSent},
    {128, "STOP", 0x78, kDropped},
    {129, "AGAIN", 0x79, kDropped},
    {130, "PROPS", 0x76, kDropped},
    {131, "UNDO", 0x7A, kDropped},
    {132, "FRONT", 0x77, kDropped},
    {133, "COPY", 0x7C, kDropped},
    {134, "OPEN", 0x74, kDropped},
    {135, "PASTE", 0x7D, kDropped},
    {136, "FIND", 0x7E, kDropped},
    {137, "CUT", 0x7B, kDropped},
    {138, "HELP", 0x75, kDropped},
    {140, "CALC", 0xFB, kDropped},
    {142, "SLEEP", 0xF8, kDropped},
    {150, "WWW", 0xF0, kDropped},
    {152, "COFFEE", 0xF9, kDropped},
    {158, "BACK", 0xF1, kDropped},
    {159, "FORWARD", 0xF2, kDropped},
    {161, "EJECTCD", 0xEC, kDropped},
    {163, "NEXTSONG", 0xEB, kDropped},
    {164, "PLAYPAUSE", 0xE8, kDropped},
    {165, "PREVIOUSSONG", 0xEA, kDropped},
    {166, "STOPCD", 0xE9, kDropped},
    {173, "REFRESH", 0xFA, kDropped},
    {176, "EDIT", 0xF7, kDropped},
    {177, "SCROLLUP", 0xF5, kDropped},
    {178, "SCROLLDOWN", 0xF6, kDropped},
    {179, "KPLEFTPAREN", 0xB6, kDropped},
    {180, "KPRIGHTPAREN", 0xB7, kDropped},
    {183, "F13", 0x68, kSent},
    {184, "F14", 0x69, kDropped},
    {185, "F15", 0x6A, kDropped},
    {186, "F16", 0x6B, kDropped},
    {187, "F17", 0x6C, kDropped},
    {188, "F18", 0x6D, kDropped},
    {189, "F19", 0x6E, kDropped},
    {190, "F20", 0x6F, kDropped},
    {191, "F21", 0x70, kDropped},
    {192, "F22", 0x71, kDropped},
    {193, "F23", 0x72, kDropped},
    {194, "F24", 0x73, kDropped},
};

struct Tables {
    std::array<KeyRow, kLastKeyCode + 1> byCode{};
    std::array<std::string_view, 256> byUsage{};
};

/// Builds both directions from the same rows; a duplicate code or usage does not compile.
consteval Tables buildTables() {
    Tables tables;
    for (const KeyRow& row : kRows) {
        if (row.code < kFirstKeyCode || row.code > kLastKeyCode ||
            tables.byCode[row.code].code != 0) {
            throw "a key code is out of range or stands twice";
        }
        tables.byCode[row.code] = row;
        if (row.release == kModifier) {
            continue;
        }
        if (!tables.byUsage[row.value].empty()) {
            throw "a usage stands twice";
        }
        tables.byUsage[row.value] = row.name;
    }
    return tables;
}

constexpr Tables kTables = buildTables();

constexpr std::uint8_t kFirstHotkeyUsage = 0x04;
constexpr std::uint8_t kLastHotkeyUsage = 0x65;
constexpr std::uint8_t kUnnamedUsage = 0x64;  // note (3)

}  // namespace

const KeyRow* findKey(int code) {
    if (code < kFirstKeyCode || code > kLastKeyCode) {
        return nullptr;
    }
    const KeyRow& row = kTables.byCode[static_cast<std::size_t>(code)];
    return row.code != 0 ? &row : nullptr;
}

std::string_view hotkeyNameOf(std::uint8_t usage) {
    if (usage < kFirstHotkeyUsage || usage > kLastHotkeyUsage || usage == kUnnamedUsage) {
        return {};
    }
    return kTables.byUsage[usage];
}

std::string_view hotkeyPrefixOf(std::uint8_t modifiers) {
    switch (modifiers) {
        case 0x01:
        case 0x10:
            return "LEFTCTRL+";
        case 0x02:
        case 0x20:
            return "LEFTSHIFT+";
        case 0x03:
        case 0x30:
            return "LEFTCTRL+LEFTSHIFT+";
        case 0x04:
        case 0x40:
            return "LEFTALT+";
        case 0x05:
        case 0x50:
            return "LEFTCTRL+LEFTALT+";
        case 0x06:
        case 0x60:
            return "LEFTSHIFT+LEFTALT+";
        case 0x08:
            return "WIN+";
        default:
            return {};
    }
}
