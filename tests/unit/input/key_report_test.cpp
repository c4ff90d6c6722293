#include <linux/input-event-codes.h>

#include <array>
#include <map>
#include <set>
#include <sstream>
#include <vector>

#include "base/inputevent.h"
#include "unit/fixture.h"

namespace {

using Report = std::array<std::uint8_t, 12>;

/// Name and HID usage or modifier bit of every key, from the evdev code behind an @ upwards. "m"
/// marks a modifier, "-" a key whose release is not sent.
constexpr const char* kKeys = R"(
    @1 ESC 29 1 1E 2 1F 3 20 4 21 5 22 6 23 7 24 8 25 9 26 0 27 MINUS 2D EQUAL 2E BACKSPACE 2A
    TAB 2B Q 14 W 1A E 08 R 15 T 17 Y 1C U 18 I 0C O 12 P 13 LEFTBRACE 2F RIGHTBRACE 30 ENTER 28
    LEFTCTRL 01m A 04 S 16 D 07 F 09 G 0A H 0B J 0D K 0E L 0F SEMICOLON 33 APOSTROPHE 34 GRAVE 35
    LEFTSHIFT 02m BACKSLASH 31 Z 1D X 1B C 06 V 19 B 05 N 11 M 10 COMMA 36 DOT 37 SLASH 38
    LEFTSHIFT 20m KPASTERISK 55 LEFTALT 04m SPACE 2C CAPSLOCK 39 F1 3A F2 3B F3 3C F4 3D F5 3E
    F6 3F F7 40 F8 41 F9 42 F10 43 NMLK 53 SCRLK 47 KP7 5F KP8 60 KP9 61 KPMINUS 56 KP4 5C KP5 5D
    KP6 5E KPPLUS 57 KP1 59 KP2 5A KP3 5B KP0 62 KPDOT 63 @85 ZENKAKUHANKAKU 94- 102ND 64- F11 44
    F12 45 RO 87- KATAKANA 92- HIRAGANA 93- HENKAN 8A- KATAKANAHIRAGANA 88- MUHENKAN 8B-
    KPJPCOMMA 8C- KPENTER 58 LEFTCTRL 10m KPSLASH 54 SYSRQ 46 LEFTALT 40m @102 HOME 4A UP 52
    PGUP 4B LEFT 50 RIGHT 4F END 4D DOWN 51 PGDN 4E INSERT 49 DELETE 4C @113 MUTE 7F-
    VOLUMEDOWN 81- VOLUMEUP 80- POWER 66- KPEQUAL 67- @119 PAUSE 48 @121 KPCOMMA 85- HANGEUL 90-
    HANJA 91- YEN 89- WIN 08m WIN 80m COMPOSE 65 STOP 78- AGAIN 79- PROPS 76- UNDO 7A- FRONT 77-
    COPY 7C- OPEN 74- PASTE 7D- FIND 7E- CUT 7B- HELP 75- @140 CALC FB- @142 SLEEP F8- @150 WWW F0-
    @152 COFFEE F9- @158 BACK F1- FORWARD F2- @161 EJECTCD EC- @163 NEXTSONG EB- PLAYPAUSE E8-
    PREVIOUSSONG EA- STOPCD E9- @173 REFRESH FA- @176 EDIT F7- SCROLLUP F5- SCROLLDOWN F6-
    KPLEFTPAREN B6- KPRIGHTPAREN B7- @183 F13 68 F14 69- F15 6A- F16 6B- F17 6C- F18 6D- F19 6E-
    F20 6F- F21 70- F22 71- F23 72- F24 73-
)";

struct Key {
    int code = 0;
    std::string name;
    int value = 0;
    char release = '\0';
};

std::vector<Key> expectedKeys() {
    std::vector<Key> keys;
    std::istringstream words(kKeys);
    int code = 0;
    for (std::string name, usage; words >> name; ++code) {
        if (name[0] == '@') {
            code = std::stoi(name.substr(1));
            words >> name;
        }
        words >> usage;
        keys.push_back({code, name, std::stoi(usage, nullptr, 16), usage.back()});
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
        const bool modifier = key.release == 'm';
        report = {0, 0, 0, 0, 0, 0xEE};
        EXPECT_EQ(press(key.code), 11);
        EXPECT_STREQ(name.data(), key.name.c_str());
        expectHeld(modifier ? key.value : 0, modifier ? 0xEE : key.value);

        report = {0, 0, 0, 0xFF, 0, 0xEE};
        EXPECT_EQ(release(key.code), key.release == '-' ? 0 : 11);
        // Right Win clears left Win's bit.
        const int cleared = key.code == KEY_RIGHTMETA ? 0x08 : key.value;
        expectHeld(modifier ? 0xFF & ~cleared : 0xFF, modifier || key.release == '-' ? 0xEE : 0);
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
    for (const int code : {KEY_LEFTSHIFT, KEY_A, KEY_RIGHTALT, KEY_B}) {
        press(code);
    }
    expectHeld(0x42, 0x05);
    release(KEY_A);
    expectHeld(0x42, 0);  // whichever key it was
    report = {};
    press(KEY_LEFTMETA);
    press(KEY_RIGHTMETA);
    release(KEY_RIGHTMETA);
    expectHeld(0x80, 0);  // right Win stays set until the report is cleared
    EXPECT_EQ(printed, "rightmeta keyup\n");
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
    const std::string ctrl = "LEFTCTRL+", shift = "LEFTSHIFT+", alt = "LEFTALT+";
    std::map<int, std::string> prefixes{{0x08, "WIN+"}};
    for (const int side : {0x01, 0x10}) {
        prefixes.insert({{side, ctrl}, {2 * side, shift}, {4 * side, alt}});
        prefixes.insert(
            {{3 * side, ctrl + shift}, {5 * side, ctrl + alt}, {6 * side, shift + alt}});
    }
    std::map<int, std::string> names;
    for (const Key& key : expectedKeys()) {
        if (key.release != 'm' && key.value >= 4 && key.value <= 101 && key.value != 0x64) {
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
