#include "words/keys.h"

#include <linux/input-event-codes.h>

#include <array>
#include <cstdio>

namespace words {
namespace {

struct Name {
    std::uint16_t type;
    std::uint16_t code;
    std::string_view name;
};

#define KEY(n) \
    { EV_KEY, KEY_##n, "KEY_" #n }
#define BTN(n) \
    { EV_KEY, BTN_##n, "BTN_" #n }
#define REL(n) \
    { EV_REL, REL_##n, "REL_" #n }
#define ABS(n) \
    { EV_ABS, ABS_##n, "ABS_" #n }
#define LED(n) \
    { EV_LED, LED_##n, "LED_" #n }

constexpr Name kNames[] = {
    // clang-format off
    KEY(ESC), KEY(1), KEY(2), KEY(3), KEY(4), KEY(5), KEY(6), KEY(7), KEY(8), KEY(9), KEY(0),
    KEY(MINUS), KEY(EQUAL), KEY(BACKSPACE), KEY(TAB), KEY(Q), KEY(W), KEY(E), KEY(R), KEY(T),
    KEY(Y), KEY(U), KEY(I), KEY(O), KEY(P), KEY(LEFTBRACE), KEY(RIGHTBRACE), KEY(ENTER),
    KEY(LEFTCTRL), KEY(A), KEY(S), KEY(D), KEY(F), KEY(G), KEY(H), KEY(J), KEY(K), KEY(L),
    KEY(SEMICOLON), KEY(APOSTROPHE), KEY(GRAVE), KEY(LEFTSHIFT), KEY(BACKSLASH), KEY(Z), KEY(X),
    KEY(C), KEY(V), KEY(B), KEY(N), KEY(M), KEY(COMMA), KEY(DOT), KEY(SLASH), KEY(RIGHTSHIFT),
    KEY(KPASTERISK), KEY(LEFTALT), KEY(SPACE), KEY(CAPSLOCK), KEY(F1), KEY(F2), KEY(F3), KEY(F4),
    KEY(F5), KEY(F6), KEY(F7), KEY(F8), KEY(F9), KEY(F10), KEY(NUMLOCK), KEY(SCROLLLOCK),
    KEY(KP7), KEY(KP8), KEY(KP9), KEY(KPMINUS), KEY(KP4), KEY(KP5), KEY(KP6), KEY(KPPLUS),
    KEY(KP1), KEY(KP2), KEY(KP3), KEY(KP0), KEY(KPDOT), KEY(ZENKAKUHANKAKU), KEY(102ND), KEY(F11),
    KEY(F12), KEY(RO), KEY(KATAKANA), KEY(HIRAGANA), KEY(HENKAN), KEY(KATAKANAHIRAGANA),
    KEY(MUHENKAN), KEY(KPJPCOMMA), KEY(KPENTER), KEY(RIGHTCTRL), KEY(KPSLASH), KEY(SYSRQ),
    KEY(RIGHTALT), KEY(LINEFEED), KEY(HOME), KEY(UP), KEY(PAGEUP), KEY(LEFT), KEY(RIGHT),
    KEY(END), KEY(DOWN), KEY(PAGEDOWN), KEY(INSERT), KEY(DELETE), KEY(MACRO), KEY(MUTE),
    KEY(VOLUMEDOWN), KEY(VOLUMEUP), KEY(POWER), KEY(KPEQUAL), KEY(KPPLUSMINUS), KEY(PAUSE),
    KEY(SCALE), KEY(KPCOMMA), KEY(HANGEUL), KEY(HANJA), KEY(YEN), KEY(LEFTMETA), KEY(RIGHTMETA),
    KEY(COMPOSE), KEY(STOP), KEY(AGAIN), KEY(PROPS), KEY(UNDO), KEY(FRONT), KEY(COPY), KEY(OPEN),
    KEY(PASTE), KEY(FIND), KEY(CUT), KEY(HELP), KEY(MENU), KEY(CALC), KEY(SLEEP), KEY(WWW),
    KEY(COFFEE), KEY(BACK), KEY(FORWARD), KEY(EJECTCD), KEY(NEXTSONG), KEY(PLAYPAUSE),
    KEY(PREVIOUSSONG), KEY(STOPCD), KEY(REFRESH), KEY(EDIT), KEY(SCROLLUP), KEY(SCROLLDOWN),
    KEY(KPLEFTPAREN), KEY(KPRIGHTPAREN), KEY(F13), KEY(F14), KEY(F15), KEY(F16), KEY(F17),
    KEY(F18), KEY(F19), KEY(F20), KEY(F21), KEY(F22), KEY(F23), KEY(F24), KEY(PLAYCD),
    BTN(LEFT), BTN(RIGHT), BTN(MIDDLE), BTN(SIDE), BTN(EXTRA), BTN(TOUCH), BTN(TOOL_FINGER),
    REL(X), REL(Y), REL(HWHEEL), REL(WHEEL), ABS(X), ABS(Y), ABS(PRESSURE), ABS(MT_POSITION_X),
    ABS(MT_POSITION_Y), ABS(MT_TRACKING_ID), LED(NUML), LED(CAPSL), LED(SCROLLL),
    {EV_SYN, SYN_REPORT, "SYN"}, {EV_MSC, MSC_SCAN, "MSC_SCAN"},
    // clang-format on
};

#undef KEY
#undef BTN
#undef REL
#undef ABS
#undef LED

/// Key codes by HID usage, sixteen a row; 0 where the usage means no key.
constexpr std::array<std::uint8_t, 256> kKeyOfUsage = {
    // clang-format off
    0,   0,   0,   0,   30,  48,  46,  32,  18,  33,  34,  35,  23,  36,  37,  38,   // 0x00
    50,  49,  24,  25,  16,  19,  31,  20,  22,  47,  17,  45,  21,  44,  2,   3,    // 0x10
    4,   5,   6,   7,   8,   9,   10,  11,  28,  1,   14,  15,  57,  12,  13,  26,   // 0x20
    27,  43,  43,  39,  40,  41,  51,  52,  53,  58,  59,  60,  61,  62,  63,  64,   // 0x30
    65,  66,  67,  68,  87,  88,  99,  70,  119, 110, 102, 104, 111, 107, 109, 106,  // 0x40
    105, 108, 103, 69,  98,  55,  74,  78,  96,  79,  80,  81,  75,  76,  77,  71,   // 0x50
    72,  73,  82,  83,  86,  127, 116, 117, 183, 184, 185, 186, 187, 188, 189, 190,  // 0x60
    191, 192, 193, 194, 134, 138, 130, 132, 128, 129, 131, 137, 133, 135, 136, 113,  // 0x70
    115, 114, 0,   0,   0,   121, 0,   89,  93,  124, 92,  94,  95,  0,   0,   0,    // 0x80
    122, 123, 90,  91,  85,  0,   0,   0,   0,   0,   0,   0,   111, 0,   0,   0,    // 0x90
    0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,    // 0xA0
    0,   0,   0,   0,   0,   0,   179, 180, 0,   0,   0,   0,   0,   0,   0,   0,    // 0xB0
    0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,    // 0xC0
    0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,    // 0xD0
    29,  42,  56,  125, 97,  54,  100, 126, 164, 166, 165, 163, 161, 115, 114, 113,  // 0xE0
    150, 158, 159, 128, 136, 177, 178, 176, 142, 152, 173, 140, 0,   0,   0,   0,    // 0xF0
    // clang-format on
};

}  // namespace

std::optional<EventCode> eventCode(std::string_view name) {
    for (const Name& row : kNames) {
        if (row.name == name) {
            return EventCode{row.type, row.code};
        }
    }
    return std::nullopt;
}

std::string eventName(EventCode event) {
    for (const Name& row : kNames) {
        if (row.type == event.type && row.code == event.code) {
            return std::string(row.name);
        }
    }
    return "";
}

std::string usageName(std::uint8_t usage) {
    const std::uint16_t code = kKeyOfUsage[usage];
    if (const std::string name = eventName({EV_KEY, code}); code != 0 && !name.empty()) {
        return name.substr(4);
    }
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "usage 0x%02X", usage);
    return text.data();
}

std::string modifierNames(std::uint8_t bits) {
    constexpr std::uint8_t kFirstModifierUsage = 0xE0;
    std::string names;
    for (unsigned bit = 0; bit < 8; ++bit) {
        if ((bits >> bit & 1U) != 0) {
            names += names.empty() ? "" : "+";
            names += usageName(static_cast<std::uint8_t>(kFirstModifierUsage + bit));
        }
    }
    return names;
}

}  // namespace words
