#include "input/key_rules.h"

#include "unit/input/rule_world.h"

namespace {

struct Keys : RuleWorld {
    Keys() {
        key(KEY_A, 2);
        sink.takeLines();
    }
    /// What one record makes of the keys, after `ms`.
    std::string key(int code, std::int32_t value, int ms = 0, std::size_t slot = 0) {
        now.microseconds += ms * 1000;
        now.seconds += now.microseconds / 1'000'000;
        now.microseconds %= 1'000'000;
        next = rules.serve(
            {{0, 0, EV_KEY, static_cast<std::uint16_t>(code), value}, slot, "event0", 3, now});
        return sink.take();
    }
    std::string down(int code, int ms = 0) { return key(code, 1, ms); }
    std::string up(int code) { return key(code, 0); }
    /// What the press says; its release is the same for all.
    std::string tap(int code, int ms) {
        const std::string said = down(code, ms);
        up(code);
        return said;
    }
    /// Whether these lines were among those since the last look.
    testing::AssertionResult printed(const std::string& lines) {
        const std::string all = sink.takeLines();
        return all.find(lines) != all.npos ? testing::AssertionSuccess()
                                           : testing::AssertionFailure() << all;
    }
    void listHotkeys(const char* list) { hotkeys.set(parseHotkeys(list, false).table); }

    TimeOfDay now{1000, 0};
    KeyRules rules{state, sink};
    std::optional<std::size_t> next;
};

TEST_F(Keys, ThreeTapsLessThan600MillisecondsApart) {
    const std::string kvm =
        "out: KVMSTART +kvm | keys 01+00 | pause 10 | keys 00+00 | pause 10 | keys 00+00";
    const struct {
        bool here;
        int code;
        std::string alone, third, lines;
    } rows[] = {
        {true, KEY_LEFTCTRL, "keys 01+00", "here: OSDSTART +osd", "osdNUm-->3\n"},
        {true, KEY_RIGHTCTRL, "keys 10+00", "here: OSDSTART +osd", "osdNUm-->3\n"},
        {false, KEY_LEFTCTRL, "keys 01+00", "out: OSDSTART +osd",
         "osdNUm-->3\nsend 10.0.0.20,OSDSTART\n------INOSD------\n"},
        {true, KEY_LEFTALT, "keys 04+00", "here: PREVIEWSTART", "alt number-->3\n"},
        {false, KEY_LEFTALT, "keys 04+00", "out: PREVIEWSTART +preview",
         "alt number-->3\nsend 10.0.0.20,PREVIEWSTART\npreview start\n"},
        {true, KEY_LEFTSHIFT, "keys 02+00", kvm, "shift number-->3\nsend 10.0.0.20,KVMSTART\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.code) + (row.here ? " here" : " out"));
        state.osdIsHere = row.here;
        const std::string first = row.alone + " | pause 10";
        const std::string second = row.code == KEY_LEFTSHIFT ? "" : first;
        EXPECT_EQ(tap(row.code, 2000), first);
        EXPECT_EQ(tap(row.code, 599), second);
        EXPECT_EQ(tap(row.code, 600), first) << "too late: a first one again";
        EXPECT_EQ(tap(row.code, 599), second);
        EXPECT_EQ(tap(row.code, 599), row.third);
        EXPECT_TRUE(printed("diff: 000s. 599ms. 000us\n" + row.lines));
        setModes("");
        state.ctrlTaps = state.altTaps = state.shiftTaps = false;
        EXPECT_EQ(tap(row.code, 1), row.alone) << "counted no more";
        state.ctrlTaps = state.altTaps = state.shiftTaps = true;
    }
    tap(KEY_LEFTSHIFT, 2000);
    tap(KEY_LEFTSHIFT, 599);
    state.box.curIp.assign("0.0.0.0");
    EXPECT_EQ(tap(KEY_LEFTSHIFT, 599), "out: KVMSTART +kvm") << "no box, no tap of Ctrl there";
}

TEST_F(Keys, AClockThatIsSetBackBeginsAnew) {
    const std::tuple<int, const char*, int> rows[] = {
        {-1, "diff: -16843010s. -16843010ms. -16843010us\n", 1},
        {-600'000, "diff: -01s. -01ms. -01us\n", 1},
        {599'999, "diff: 000s. 599ms. 999us\n", 2},
        {1'100'001, "diff: 001s. 100ms. 001us\n", 1}};
    for (const auto& [microseconds, line, count] : rows) {
        tap(KEY_A, 0);
        now = {2000, 500'000};
        tap(KEY_LEFTCTRL, 0);
        const int at = 500'000 + microseconds;
        now = at < 0 ? TimeOfDay{1999, at + 1'000'000} : TimeOfDay{2000, at};
        tap(KEY_LEFTCTRL, 0);
        EXPECT_TRUE(printed(line + ("osdNUm-->" + std::to_string(count)) + "\n"));
    }
}

TEST_F(Keys, TheCountersShareTheirTimingAndResetEachOther) {
    /// What the last of these taps says, with no mode on and no count afterwards.
    const auto last = [&](std::initializer_list<int> codes, bool ends = true) {
        std::string said;
        for (const int code : codes) {
            said = tap(code, 300);
        }
        setModes("");
        if (ends) {
            tap(KEY_A, 300);
        }
        return said;
    };
    constexpr int kCtrl = KEY_LEFTCTRL, kAlt = KEY_LEFTALT, kShift = KEY_LEFTSHIFT;
    state.osdIsHere = false;
    EXPECT_EQ(last({kCtrl, kAlt, kCtrl, kShift, kCtrl}), "out: OSDSTART +osd")
        << "600 ms after the last Ctrl, but 300 after a tap";
    tap(kCtrl, 300);
    tap(kCtrl, 100);
    tap(KEY_A, 100);
    EXPECT_EQ(last({kCtrl}), "keys 01+00 | pause 10") << "another key ends the count";
    last({kAlt, kAlt, kCtrl, kCtrl, kCtrl}, false);
    sink.takeLines();
    tap(kCtrl, 300);
    EXPECT_TRUE(printed("osdNUm-->1\n")) << "the third Ctrl ends the count";
    EXPECT_EQ(last({kAlt}), "keys 04+00 | pause 10") << "and Alt's with it";
    last({kCtrl, kCtrl, kAlt, kAlt, kAlt}, false);
    EXPECT_EQ(last({kCtrl}), "keys 01+00 | pause 10") << "and the third Alt Ctrl's";
    state.osdIsHere = true;
    last({kCtrl, kCtrl, kAlt, kAlt, kAlt}, false);
    EXPECT_EQ(last({kAlt, kAlt, kAlt}, false), "keys 04+00 | pause 10") << "it counts on from 3";
    EXPECT_EQ(last({kCtrl}), "keys 01+00 | pause 10");
    EXPECT_EQ(last({kAlt, kAlt, kAlt}), "here: PREVIEWSTART");
}

TEST_F(Keys, ThreeEscapesLeaveEveryModeOfAnOutputBox) {
    state.osdIsHere = false;
    for (const std::string mode : {"o", "p", "k", "opk"}) {
        setModes(mode);
        EXPECT_EQ(tap(KEY_ESC, 2000).substr(0, 23), "out keys: 00+29 locks 0");
        tap(KEY_ESC, 599);
        EXPECT_TRUE(printed("ESC PRESS NUMBER:2\nout:10.0.0.20 in osd get ESC\n"));
        EXPECT_EQ(tap(KEY_ESC, 600).substr(0, 8), "out keys") << "a first one again";
        tap(KEY_ESC, 599);
        EXPECT_EQ(tap(KEY_ESC, 599), "out: OSDQUIT | keys 00+29") << mode;
        EXPECT_TRUE(printed("ESC PRESS NUMBER:3\n3 esc force out of osd\nsend ESC to input\n"));
    }
    state.osdIsHere = true;
    EXPECT_EQ(tap(KEY_ESC, 1) + tap(KEY_ESC, 1) + tap(KEY_ESC, 1),
              "keys 00+29keys 00+29keys 00+29");
}

TEST_F(Keys, ACombinationIsAHotkeyAnArrowOrForTheBox) {
    const struct {
        const char* hotkeys;
        int modifier, key;
        const char* said;
        std::size_t next;
    } rows[] = {
        {"", KEY_LEFTCTRL, KEY_A, "keys 01+04 | pause 10", 1},
        {"LEFTCTRL+A:menu", KEY_RIGHTCTRL, KEY_A, "here keys: 10+04 | keys 00+00", 1},
        {"LEFTCTRL+B#LEFTCTRL+A", KEY_LEFTCTRL, KEY_A, "here keys: 01+04 | keys 00+00", 2},
        {"LEFTCTRL+B#LEFTALT+A", KEY_LEFTCTRL, KEY_A, "keys 01+04 | pause 10", 3},
        {"LEFTALT+F1", KEY_LEFTALT, KEY_F10, "here keys: 04+43 | keys 00+00", 1},
        {"", KEY_LEFTCTRL, KEY_LEFT, "arrow left | keys 01+50 | pause 10", 1},
        {"", KEY_RIGHTCTRL, KEY_RIGHT, "arrow right | keys 10+4f | pause 10", 1},
        {"", KEY_LEFTCTRL, KEY_UP, "arrow up | keys 01+52 | pause 10", 1},
        {"", KEY_LEFTCTRL, KEY_DOWN, "arrow down | keys 01+51 | pause 10", 1},
        {"", KEY_LEFTALT, KEY_LEFT, "keys 04+50 | pause 10", 1},
        {"LEFTCTRL+UP", KEY_LEFTCTRL, KEY_UP, "here keys: 01+52 | keys 00+00 | arrow up", 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.said);
        listHotkeys(row.hotkeys);
        down(row.modifier, 2000);
        EXPECT_EQ(down(row.key), row.said);
        EXPECT_EQ(next, row.next);
        const bool matched = std::string_view(row.said).starts_with("here");
        EXPECT_EQ(down(KEY_TAB).empty(), matched) << "the combination after a hotkey is swallowed";
        for (const int code : {row.modifier, row.key, KEY_TAB}) {
            up(code);
        }
    }
    listHotkeys("");
    down(KEY_LEFTCTRL, 2000);
    down(KEY_RIGHTCTRL, 2000);
    EXPECT_EQ(down(KEY_LEFT), "keys 11+50 | pause 10") << "both Ctrls do not cross";
    up(KEY_RIGHTCTRL);
    down(KEY_LEFTALT);
    EXPECT_EQ(down(KEY_LEFT), "keys 05+50 | pause 10") << "nor does Ctrl with Alt";
    up(KEY_LEFTALT);
    sink.onCommand = [&] { state.box.curIp.assign("0.0.0.0"); };
    EXPECT_EQ(down(KEY_RIGHT), "arrow right") << "the box that has got control is none";
    EXPECT_EQ(down(KEY_A), "");
}

TEST_F(Keys, EachModeHasItsWayForPressesAndReleases) {
    const struct {
        bool here;
        const char* modes;
        int code;
        const char *press, *release;
    } rows[] = {
        {true, "", KEY_A, "keys 00+04", "keys 00+00"},
        {true, "o", KEY_A, "here keys: 00+04 +osd", "here keys: 00+00 +osd"},
        {true, "p", KEY_A, "here keys: 00+04 +preview", "here keys: 00+00 +preview"},
        {true, "k", KEY_A, "here keys: 00+04 +kvm", "keys 00+00"},
        {true, "o", KEY_ESC, "here: OSDQUIT", "keys 00+00"},
        {true, "op", KEY_ESC, "here: PREVIEWQUIT", "keys 00+00"},
        {true, "k", KEY_ESC, "here: OSDQUIT +kvm", "keys 00+00"},
        {false, "o", KEY_A, "out keys: 00+04 locks 0 +osd", "here keys: 00+00 +osd"},
        {false, "p", KEY_ESC, "out keys: 00+29 locks 0 +preview", "here keys: 00+00 +preview"},
        {false, "k", KEY_A, "out keys: 00+04 locks 0 +kvm", "keys 00+00"},
        // A lock key reads the lights for the OSD, and tells them to a box that has keys and
        // pointer.
        {true, "", KEY_CAPSLOCK, "keys 00+39", "keys 00+00 | tell lights"},
        {true, "", KEY_NUMLOCK, "keys 00+53", "keys 00+00 | tell lights"},
        {true, "o", KEY_NUMLOCK, "read lights | here keys: 00+53 +osd", "here keys: 00+00 +osd"},
        {true, "p", KEY_CAPSLOCK, "here keys: 00+39 +preview", "here keys: 00+00 +preview"},
        {false, "k", KEY_CAPSLOCK, "out keys: 00+39 locks 1 +kvm", "keys 00+00"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.modes) + " " + row.press);
        console.lights.capsLockOn = console.lights.numLockOn = 0;
        state.osdIsHere = row.here;
        setModes(row.modes);
        EXPECT_EQ(down(row.code, 2000), row.press);
        EXPECT_EQ(up(row.code), row.release);
        EXPECT_EQ(console.lights.capsLockOn, row.code == KEY_CAPSLOCK);
        EXPECT_EQ(console.lights.numLockOn, row.code == KEY_NUMLOCK);
        down(row.code);
        up(row.code);
        EXPECT_EQ(console.lights.capsLockOn + console.lights.numLockOn, 0);
    }
    setModes("");
    state.box.is_user_ip = true;
    down(KEY_CAPSLOCK);
    EXPECT_EQ(up(KEY_CAPSLOCK), "keys 00+00") << "no lights there";
    state.osdIsHere = false;
    setModes("o");
    for (const int locks : {0, 1, 2, 3}) {
        console.lights.capsLockOn = locks % 2 != 0;
        console.lights.numLockOn = locks > 1;
        EXPECT_EQ(down(KEY_A), "out keys: 00+04 locks " + std::to_string(locks) + " +osd");
        EXPECT_EQ(sink.takeLines().find("num lock\n") != std::string::npos, locks > 1);
    }
}

TEST_F(Keys, TheStartKeyIsLetGoAtTheBasePort) {
    EXPECT_EQ(down(KEY_F13), "keys 00+68 | pause 10 | base port 00+00");
    state.box.is_user_ip = true;
    EXPECT_EQ(down(KEY_F13), "keys 00+68");
    state.box.curIp.assign("0.0.0.0");
    EXPECT_EQ(down(KEY_F13) + down(KEY_B), "");
    EXPECT_EQ(down(240), "") << "a key that is not handled";
}

TEST_F(Keys, HeldIsWhatThisListenerSawPressedAndNotYetReleased) {
    EXPECT_EQ(up(KEY_F14), "") << "a release that is never sent";
    EXPECT_EQ(up(KEY_A), "keys 00+00") << "forwarded, and no more";
    EXPECT_EQ(rules.held().count(), 0U);
    const struct {
        int code, value;
        std::size_t slot, held;
    } rows[] = {{KEY_RIGHTMETA, 1, 0, 1}, {KEY_A, 1, 0, 2}, {KEY_A, 2, 0, 2}, {KEY_A, 1, 1, 3},
                {KEY_A, 1, 1, 3},         {KEY_B, 0, 1, 3}, {KEY_A, 0, 2, 3}, {KEY_A, 0, 0, 2},
                {KEY_A, 0, 0, 2},         {KEY_A, 0, 1, 1}};
    for (const auto& row : rows) {
        key(row.code, row.value, 0, row.slot);
        EXPECT_EQ(rules.held().count(), row.held) << "row " << &row - rows;
    }
    EXPECT_EQ(state.keys.modifiers(), 0x80);
    up(KEY_RIGHTMETA);
    EXPECT_EQ(state.keys.modifiers(), 0) << "the stuck bit goes when the last key is up";
}

TEST_F(Keys, LightsAreReadAtTheFirstKeyAndTakenFromTheKeyboard) {
    KeyRules fresh(state, sink);
    const auto serve = [&](std::uint16_t type, std::uint16_t code, std::int32_t value) {
        fresh.serve({{0, 0, type, code, value}, 2, "event7", 9, now});
        return sink.take();
    };
    console.lights.ledKeyFd.set(-1);
    EXPECT_EQ(serve(EV_LED, LED_CAPSL, 1), "");
    EXPECT_EQ(console.lights.capsLockOn, 1);
    serve(EV_LED, LED_NUML, 1);
    EXPECT_EQ(console.lights.numLockOn, 0);
    serve(EV_LED, LED_SCROLLL, 1);
    EXPECT_EQ(sink.takeLines(),
              "type:17 code:1 value:1\nfd :9 event7 led get code  1,value  1\n"
              "type:17 code:0 value:1\nfd :9 event7 led get code  0,value  1\n"
              "type:17 code:2 value:1\nnot support other led event\n"
              "fd :9 event7 led get code  2,value  1\n");
    EXPECT_EQ(console.lights.ledKeyFd.copy(), -1);
    console.duties.hotPlugFlag = 1;
    sink.onCommand = [&] { console.duties.hotPlugFlag = 0; };
    console.modes.kvmMode = 1;
    EXPECT_EQ(serve(EV_KEY, KEY_B, 2), "read lights");
    EXPECT_EQ(console.lights.ledKeyFd.copy(), 9);
    console.duties.hotPlugFlag = 1;
    EXPECT_EQ(serve(EV_KEY, KEY_B, 1), "here keys: 00+05 +kvm") << "not due in a mode";
    setModes("");
    EXPECT_EQ(serve(EV_KEY, KEY_B, 1), "resync | keys 00+05");
    EXPECT_EQ(serve(EV_KEY, KEY_B, 1), "keys 00+05");
}

/// Passwords of the same length and with the same shifts leave the same lines, whoever gets them.
TEST_F(Keys, HiddenKeysLeaveNoTrace) {
    using Password = std::vector<std::pair<int, bool>>;  // keys, and whether with Shift
    const Password passwords[] = {
        {{KEY_A, false}, {KEY_B, true}, {KEY_3, false}, {KEY_4, true}, {KEY_SPACE, false}},
        {{KEY_X, false}, {KEY_MINUS, true}, {KEY_8, false}, {KEY_Q, true}, {KEY_DOT, false}}};
    for (const bool hidden : {false, true}) {
        for (const char* modes : {"", "o", "p", "k"}) {
            for (const bool here : {true, false}) {
                std::string lines[2];
                for (int which = 0; which < 2; ++which) {
                    sink.hidesKeys = hidden;
                    state.osdIsHere = here;
                    for (const auto& [code, shifted] : passwords[which]) {
                        setModes(modes);
                        key(KEY_LEFTSHIFT, shifted ? 1 : 2, 1000);
                        tap(code, 0);
                        key(KEY_LEFTSHIFT, shifted ? 0 : 2);
                    }
                    lines[which] = sink.takeLines();
                }
                EXPECT_EQ(lines[0] == lines[1], hidden) << modes << here << lines[0] << lines[1];
                EXPECT_NE(lines[0], "");
            }
        }
    }
}

}  // namespace
