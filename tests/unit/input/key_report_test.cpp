#include "input/key_report.h"

#include <linux/input-event-codes.h>

#include <array>
#include <map>

#include "unit/fixture.h"

namespace {

using Report = std::array<std::uint8_t, 12>;

/// Digests of what the keys do, one for each 32 evdev codes from 0 upwards; no code behind them is
/// a key. The test that fails for a row changed on purpose prints the page's rows and its digest.
constexpr std::uint64_t kDigests[] = {0x170DDF31390F0561, 0xA82EB5D0D012D4A6, 0xE1B0AF0A4B04D54F,
                                      0x9BB15494EC40F290, 0x2409BD927E229CD4, 0x88474A44944D4392,
                                      0x2506CD5DB476D5B2};
/// Likewise of the names that usages 0 to 255 have in a hotkey's text.
constexpr std::uint64_t kHotkeyNames = 0x55882E29413DC7FB;

/// FNV-1a.
std::uint64_t digest(std::string_view text) {
    std::uint64_t value = 0xCBF29CE484222325;
    for (const char byte : text) {
        value = (value ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
    }
    return value;
}

struct Translation : testing::Test {
    int press(int code) {
        name = {"untouched"};
        return OnKeyDown(lights, code, report.data(), 0, 0, 0, name.data());
    }

    int release(int code) {
        int result = 0;
        printed = printedBy([&] { result = OnKeyUp(code, report.data(), 0); });
        return result;
    }

    void expectHeld(int modifiers, int usage) const {
        EXPECT_EQ(report, (Report{0x57, 0xAB, 0x01, static_cast<std::uint8_t>(modifiers), 0,
                                  static_cast<std::uint8_t>(usage)}));
    }

    Lights lights;
    Report report{};
    std::array<char, 30> name{};
    std::string printed;
};

TEST_F(Translation, EveryKeyIsPressedAndReleasedAsItsRowSays) {
    constexpr int kPage = 32;
    std::array<std::string, 0x300 / kPage> pages;
    for (int code = -1; code < 0x300; ++code) {
        report = {0, 0, 0, 0, 0, 0xEE};
        const int pressed = press(code);
        const std::string down = hex(report);
        report = {0, 0, 0, 0xFF, 0, 0xEE};
        const int released = release(code);
        if (pressed + released == 0) {
            EXPECT_EQ(down + name.data(), hex(Report{0x57, 0xAB, 1, 0, 0, 0xEE}) + "untouched");
            expectHeld(0xFF, 0xEE);
            continue;
        }
        pages.at(static_cast<std::size_t>(code / kPage)) +=
            std::to_string(code) + " " + name.data() + " " + down + ", " + hex(report) + " " +
            std::to_string(pressed) + " " + std::to_string(released) + " " + printed + "\n";
    }
    for (std::size_t page = 0; page < pages.size(); ++page) {
        EXPECT_EQ(digest(pages[page]), page < std::size(kDigests) ? kDigests[page] : digest(""))
            << pages[page];
    }
}

TEST_F(Translation, CarriesOneKeyAtATimeAndEveryHeldModifier) {
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

TEST_F(Translation, EveryHotkeyTextIsPrefixThenName) {
    const std::string ctrl = "LEFTCTRL+", shift = "LEFTSHIFT+", alt = "LEFTALT+";
    std::map<int, std::string> prefixes{{0x08, "WIN+"}};
    for (const int side : {0x01, 0x10}) {
        prefixes.insert({{side, ctrl}, {2 * side, shift}, {4 * side, alt}});
        prefixes.insert(
            {{3 * side, ctrl + shift}, {5 * side, ctrl + alt}, {6 * side, shift + alt}});
    }
    const auto textOf = [this](int modifiers, int usage) {
        report[3] = static_cast<std::uint8_t>(modifiers);
        report[5] = static_cast<std::uint8_t>(usage);
        std::array<char, 64> text{"-"};  // it is appended
        EXPECT_EQ(GetChar(report.data(), text.data()), 1);
        return std::string(text.data());
    };
    std::string names;
    for (int usage = 0; usage < 256; ++usage) {
        names += std::to_string(usage) + textOf(0, usage) + "\n";
    }
    EXPECT_EQ(digest(names), kHotkeyNames) << names;
    for (int both = 0; both < 0x10000; ++both) {
        const std::string prefix = prefixes.count(both >> 8) != 0 ? prefixes.at(both >> 8) : "";
        ASSERT_EQ(textOf(both >> 8, both & 0xFF), "-" + prefix + textOf(0, both & 0xFF).substr(1))
            << "modifiers " << (both >> 8) << " usage " << (both & 0xFF);
    }
}

}  // namespace
