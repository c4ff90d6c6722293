#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include <array>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "app/base/inputevent.h"
#include "unit/net/open_socket.h"

namespace {

using Report = std::array<std::uint8_t, 12>;

/// Evdev code, name, HID usage or modifier bit, and what its release does: sent, dropped, modifier.
constexpr const char* kKeys = R"(
    1 ESC 29 up; 2 1 1E up; 3 2 1F up; 4 3 20 up; 5 4 21 up; 6 5 22 up; 7 6 23 up; 8 7 24 up;
    9 8 25 up; 10 9 26 up; 11 0 27 up; 12 MINUS 2D up; 13 EQUAL 2E up; 14 BACKSPACE 2A up;
    15 TAB 2B up; 16 Q 14 up; 17 W 1A up; 18 E 08 up; 19 R 15 up; 20 T 17 up; 21 Y 1C up;
    22 U 18 up; 23 I 0C up; 24 O 12 up; 25 P 13 up; 26 LEFTBRACE 2F up; 27 RIGHTBRACE 30 up;
    28 ENTER 28 up; 29 LEFTCTRL 01 mod; 30 A 04 up; 31 S 16 up; 32 D 07 up; 33 F 09 up;
    34 G 0A up; 35 H 0B up; 36 J 0D up; 37 K 0E up; 38 L 0F up; 39 SEMICOLON 33 up;
    40 APOSTROPHE 34 up; 41 GRAVE 35 up; 42 LEFTSHIFT 02 mod; 43 BACKSLASH 31 up; 44 Z 1D up;
    45 X 1B up; 46 C 06 up; 47 V 19 up; 48 B 05 up; 49 N 11 up; 50 M 10 up; 51 COMMA 36 up;
    52 DOT 37 up; 53 SLASH 38 up; 54 LEFTSHIFT 20 mod; 55 KPASTERISK 55 up; 56 LEFTALT 04 mod;
    57 SPACE 2C up; 58 CAPSLOCK 39 up; 59 F1 3A up; 60 F2 3B up; 61 F3 3C up; 62 F4 3D up;
    63 F5 3E up; 64 F6 3F up; 65 F7 40 up; 66 F8 41 up; 67 F9 42 up; 68 F10 43 up; 69 NMLK 53 up;
    70 SCRLK 47 up; 71 KP7 5F up; 72 KP8 60 up; 73 KP9 61 up; 74 KPMINUS 56 up; 75 KP4 5C up;
    76 KP5 5D up; 77 KP6 5E up; 78 KPPLUS 57 up; 79 KP1 59 up; 80 KP2 5A up; 81 KP3 5B up;
    82 KP0 62 up; 83 KPDOT 63 up; 85 ZENKAKUHANKAKU 94 --; 86 102ND 64 --; 87 F11 44 up;
    88 F12 45 up; 89 RO 87 --; 90 KATAKANA 92 --; 91 HIRAGANA 93 --; 92 HENKAN 8A --;
    93 KATAKANAHIRAGANA 88 --; 94 MUHENKAN 8B --; 95 KPJPCOMMA 8C --; 96 KPENTER 58 up;
    97 LEFTCTRL 10 mod; 98 KPSLASH 54 up; 99 SYSRQ 46 up; 100 LEFTALT 40 mod; 102 HOME 4A up;
    103 UP 52 up; 104 PGUP 4B up; 105 LEFT 50 up; 106 RIGHT 4F up; 107 END 4D up; 108 DOWN 51 up;
    109 PGDN 4E up; 110 INSERT 49 up; 111 DELETE 4C up; 113 MUTE 7F --; 114 VOLUMEDOWN 81 --;
    115 VOLUMEUP 80 --; 116 POWER 66 --; 117 KPEQUAL 67 --; 119 PAUSE 48 up; 121 KPCOMMA 85 --;
    122 HANGEUL 90 --; 123 HANJA 91 --; 124 YEN 89 --; 125 WIN 08 mod; 126 WIN 80 mod;
    127 COMPOSE 65 up; 128 STOP 78 --; 129 AGAIN 79 --; 130 PROPS 76 --; 131 UNDO 7A --;
    132 FRONT 77 --; 133 COPY 7C --; 134 OPEN 74 --; 135 PASTE 7D --; 136 FIND 7E --;
    137 CUT 7B --; 138 HELP 75 --; 140 CALC FB --; 142 SLEEP F8 --; 150 WWW F0 --;
    152 COFFEE F9 --; 158 BACK F1 --; 159 FORWARD F2 --; 161 EJECTCD EC --; 163 NEXTSONG EB --;
    164 PLAYPAUSE E8 --; 165 PREVIOUSSONG EA --; 166 STOPCD E9 --; 173 REFRESH FA --;
    176 EDIT F7 --; 177 SCROLLUP F5 --; 178 SCROLLDOWN F6 --; 179 KPLEFTPAREN B6 --;
    180 KPRIGHTPAREN B7 --; 183 F13 68 up; 184 F14 69 --; 185 F15 6A --; 186 F16 6B --;
    187 F17 6C --; 188 F18 6D --; 189 F19 6E --; 190 F20 6F --; 191 F21 70 --; 192 F22 71 --;
    193 F23 72 --; 194 F24 73 --;
)";

struct Key {
    int code = 0;
    std::string name;
    int value = 0;
    std::string release;
};

std::vector<Key> expectedKeys() {
    std::vector<Key> keys;
    std::istringstream rows(kKeys);
    for (Key key; rows >> key.code >> key.name >> std::hex >> key.value >> std::dec >> key.release;
         keys.push_back(key)) {
        key.release.pop_back();  // the semicolon
    }
    return keys;
}

struct KeyReport : testing::Test {
    int press(int code) {
        name = {"untouched"};
        return events.OnKeyDown(code, report.data(), 0, 0, 0, name.data());
    }

    int release(int code) {
        int result = 0;
        printed = printedBy([&] { result = events.OnKeyUp(code, report.data(), 0); });
        return result;
    }

    void expectHeld(int modifiers, int usage) const {
        EXPECT_EQ(report, (Report{0x57, 0xAB, 0x01, static_cast<std::uint8_t>(modifiers), 0,
                                  static_cast<std::uint8_t>(usage)}));
    }

    inputevent_ events;
    Report report{};
    std::array<char, 30> name{};
    std::string printed;
};

TEST_F(KeyReport, EveryKeyIsPressedAndReleasedAsItsRowSays) {
    const std::vector<Key> keys = expectedKeys();
    ASSERT_EQ(keys.size(), 162U);
    std::set<int> handled;
    for (const Key& key : keys) {
        SCOPED_TRACE(key.code);
        handled.insert(key.code);
        const bool modifier = key.release == "mod";
        report = {0, 0, 0, 0, 0, 0xEE};
        EXPECT_EQ(press(key.code), 11);
        EXPECT_STREQ(name.data(), key.name.c_str());
        expectHeld(modifier ? key.value : 0, modifier ? 0xEE : key.value);

        report = {0, 0, 0, 0xFF, 0, 0xEE};
        EXPECT_EQ(release(key.code), key.release == "--" ? 0 : 11);
        // Right Win clears left Win's bit.
        const int cleared = key.code == KEY_RIGHTMETA ? 0x08 : key.value;
        expectHeld(modifier ? 0xFF & ~cleared : 0xFF, key.release == "up" ? 0 : 0xEE);
        EXPECT_EQ(printed.empty(), !modifier) << printed;
    }
    for (int code = -1; code <= 0x2FF; ++code) {
        if (handled.count(code) == 0) {
            report = {};
            EXPECT_EQ(press(code), 0) << code;
            EXPECT_STREQ(name.data(), "untouched") << code;
            EXPECT_EQ(release(code), 0) << code;
            expectHeld(0, 0);
        }
    }
}

TEST_F(KeyReport, CarriesOneKeyAtATimeAndEveryHeldModifier) {
    press(KEY_LEFTSHIFT);
    press(KEY_A);
    press(KEY_RIGHTALT);
    press(KEY_B);
    expectHeld(0x42, 0x05);
    release(KEY_A);
    expectHeld(0x42, 0);  // whichever key it was
}

TEST_F(KeyReport, RightWinStaysSetUntilTheReportIsCleared) {
    press(KEY_LEFTMETA);
    press(KEY_RIGHTMETA);
    release(KEY_RIGHTMETA);
    expectHeld(0x80, 0);
    EXPECT_EQ(printed, "rightmeta keyup\n");
    release(KEY_LEFTMETA);
    expectHeld(0x80, 0);
}

TEST_F(KeyReport, LockKeysToggleOnPressesOnly) {
    for (const int expected : {1, 0, 1}) {
        press(KEY_CAPSLOCK);
        release(KEY_CAPSLOCK);
        press(KEY_SCROLLLOCK);
        EXPECT_EQ(events.capsLockOn, expected);
    }
    EXPECT_EQ(events.numLockOn, 0);
    press(KEY_NUMLOCK);
    EXPECT_EQ(events.numLockOn, 1);
}

TEST_F(KeyReport, EveryHotkeyTextIsPrefixThenName) {
    const std::map<int, std::string> prefixes = {{0x01, "LEFTCTRL+"},
                                                 {0x10, "LEFTCTRL+"},
                                                 {0x02, "LEFTSHIFT+"},
                                                 {0x20, "LEFTSHIFT+"},
                                                 {0x03, "LEFTCTRL+LEFTSHIFT+"},
                                                 {0x30, "LEFTCTRL+LEFTSHIFT+"},
                                                 {0x04, "LEFTALT+"},
                                                 {0x40, "LEFTALT+"},
                                                 {0x05, "LEFTCTRL+LEFTALT+"},
                                                 {0x50, "LEFTCTRL+LEFTALT+"},
                                                 {0x06, "LEFTSHIFT+LEFTALT+"},
                                                 {0x60, "LEFTSHIFT+LEFTALT+"},
                                                 {0x08, "WIN+"}};
    std::map<int, std::string> names;
    for (const Key& key : expectedKeys()) {
        if (key.release != "mod" && key.value >= 4 && key.value <= 101 && key.value != 0x64) {
            names[key.value] = key.name;
        }
    }
    for (int both = 0; both < 0x10000; ++both) {
        const int modifiers = both >> 8;
        const int usage = both & 0xFF;
        report[3] = static_cast<std::uint8_t>(modifiers);
        report[5] = static_cast<std::uint8_t>(usage);
        std::array<char, 64> text{"-"};  // it is appended
        EXPECT_EQ(events.GetChar(report.data(), text.data()), 1);
        ASSERT_EQ(text.data(), "-" + (prefixes.count(modifiers) ? prefixes.at(modifiers) : "") +
                                   (names.count(usage) ? names.at(usage) : ""))
            << "modifiers " << modifiers << " usage " << usage;
    }
}

}  // namespace
