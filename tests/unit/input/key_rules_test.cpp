#include <linux/input-event-codes.h>

#include "unit/input/listener_world.h"

namespace {

constexpr const char* kReleaseAtBox = "box 57AB010000000000000000";
constexpr const char* kCtrlAtBox = "box 57AB010100000000000000";
constexpr const char* kAltAtBox = "box 57AB010400000000000000";

struct KeyRules : ListenerWorld {
    /// A key event through a keyboard's pipe; what was sent for it.
    Sent key(std::uint16_t code, std::int32_t value) {
        if (events.keyDevices.count == 0) {
            keyboard = add(events.keyDevices);
        }
        EXPECT_TRUE(
            give(keyboard, serveKeyboards, events.keyDevices.fds[0], {0, 0, EV_KEY, code, value}));
        return sent();
    }

    static void setHotkeys(const std::vector<std::string>& entries) {
        HotkeyTable table;
        for (const std::string& entry : entries) {
            entry.copy(table.entries[table.count++].data(), entry.size());
        }
        hotkeyinfo_.set(table);
    }

    int keyboard = -1;
};

TEST_F(KeyRules, WithALocalOsdTheAltCounterStaysAtThree) {
    press(KEY_LEFTALT);
    press(KEY_LEFTALT);
    EXPECT_EQ(sent(), (Sent{kAltAtBox, kAltAtBox}));
    press(KEY_LEFTALT);
    EXPECT_EQ(sent(), Sent{"osd-command PREVIEWSTART"});
    EXPECT_EQ(events.previewMode, 0);
    for (int i = 0; i < 3; ++i) {
        press(KEY_LEFTALT);
        EXPECT_EQ(sent(), Sent{kAltAtBox}) << "counts on from 3 and does not fire again";
    }
}

TEST_F(KeyRules, TheSecondShiftIsSwallowedAndTheThirdStartsKvmMode) {
    press(KEY_LEFTSHIFT);
    EXPECT_EQ(sent(), Sent{"box 57AB010200000000000000"});
    press(KEY_LEFTSHIFT);
    EXPECT_EQ(sent(), Sent{});
    press(KEY_LEFTSHIFT);
    EXPECT_EQ(sent(), (Sent{"out-command KVMSTART", kCtrlAtBox, kReleaseAtBox, kReleaseAtBox}));
    EXPECT_EQ(events.kvmMode, 1);
}

TEST_F(KeyRules, F13sReleaseGoesToTheBasePort) {
    press(KEY_F13);
    EXPECT_EQ(sent(), (Sent{"base 57AB010000000000000000", "box 57AB010000680000000000"}));
}

TEST_F(KeyRules, KeysForAnOutputBoxesOsdCarryTheLockByteOnce) {
    qtFlag = 0;
    osdFlag = 1;
    for (const unsigned locks : {0U, 1U, 2U, 3U}) {
        events.capsLockOn = locks % 2 != 0;
        events.numLockOn = locks > 1;
        press(KEY_A);
        EXPECT_EQ(sent(), Sent{"out-key 57AB0100000400000000000" + std::to_string(locks)});
        press(KEY_ESC);
        EXPECT_EQ(sent(), Sent{"out-key 57AB0100002900000000000" + std::to_string(locks)});
        state.escTaps.reset();
    }
}

TEST_F(KeyRules, ThreeEscapesForceAnOutputBoxesOsdClosed) {
    qtFlag = 0;
    osdFlag = events.previewMode = events.kvmMode = 1;
    press(KEY_ESC);
    press(KEY_A);  // the OSD's keys do not start the count over
    press(KEY_ESC);
    EXPECT_EQ(sent().size(), 3U);
    EXPECT_FALSE(modesAreOff(events));
    press(KEY_ESC);
    EXPECT_EQ(sent(), (Sent{"out-command OSDQUIT", "box 57AB010000290000000000"}));
    EXPECT_TRUE(modesAreOff(events));
}

TEST_F(KeyRules, TheHotkeySentFlagCopiesReleasesAndSwallowsTheNextCombination) {
    setHotkeys({"LEFTCTRL+A:carried along"});
    key(KEY_LEFTCTRL, 1);
    EXPECT_EQ(key(KEY_A, 1), (Sent{"osd-key 57AB010100040000000000", kReleaseAtBox}));
    EXPECT_EQ(key(KEY_A, 0), (Sent{"osd-key 57AB010100000000000000", kCtrlAtBox}));
    EXPECT_EQ(key(KEY_C, 1), Sent{}) << "swallowed, and the flag is cleared";
    EXPECT_EQ(key(KEY_C, 0), Sent{kCtrlAtBox});
    EXPECT_EQ(key(KEY_C, 1), Sent{"box 57AB010100060000000000"});
}

TEST_F(KeyRules, TheLookUpsIndexGoesOnAsTheKeyboards) {
    const struct {
        std::vector<std::string> hotkeys;
        int presser;
        std::vector<bool> left;  ///< which keyboards still have their event after one pass
    } rows[] = {
        {{}, 0, {false, false, false}},                           // no match in 0: slot 1
        {{"LEFTCTRL+A"}, 0, {false, false, false}},               // match at 0: slot 1
        {{"LEFTCTRL+B", "LEFTCTRL+A"}, 0, {false, true, false}},  // match at 1: slot 2
        {{"LEFTCTRL+B", "LEFTALT+A"}, 0, {false, true, true}},    // no match in 2: slot 3
        {{"LEFTCTRL+A"}, 2, {false, false, false}},               // back to slot 1, now empty
    };
    for (const auto& row : rows) {
        setHotkeys(row.hotkeys);
        state.report[3] = 0x01;
        events.keyDevices.count = 0;
        FD_ZERO(&state.ready);
        for (int i = 0; i < 3; ++i) {
            const InputRecord record{
                0, 0, i == row.presser ? std::uint16_t{EV_KEY} : std::uint16_t{}, KEY_A, 1};
            EXPECT_EQ(write(add(events.keyDevices), &record, sizeof record), kRecordSize);
            FD_SET(events.keyDevices.fds[static_cast<std::size_t>(i)], &state.ready);
        }
        EXPECT_TRUE(serveKeyboards(state));
        std::vector<bool> left;
        for (std::size_t i = 0; i < 3; ++i) {
            left.push_back(unread(events.keyDevices.fds[i]));
        }
        EXPECT_EQ(left, row.left) << testing::PrintToString(row.hotkeys);
    }
}

TEST_F(KeyRules, ReleasesGoToTheLocalOsdOrToTheBox) {
    const struct {
        std::uint8_t qt, osd, preview, kvm;
        const char* receiver;
    } rows[] = {{1, 1, 0, 0, "osd-key"},
                {0, 1, 0, 0, "osd-key"},
                {0, 0, 1, 0, "osd-key"},
                {1, 0, 0, 1, "box"},
                {1, 0, 0, 0, "box"}};
    for (const auto& row : rows) {
        qtFlag = row.qt;
        osdFlag = row.osd;
        events.previewMode = row.preview;
        events.kvmMode = row.kvm;
        EXPECT_EQ(key(KEY_A, 0), Sent{row.receiver + std::string(" 57AB010000000000000000")});
    }
    EXPECT_EQ(key(KEY_F14, 0), Sent{}) << "a release that is never sent";
}

TEST_F(KeyRules, TheHeldCountHasAFloorAndAtZeroNothingIsRemembered) {
    key(KEY_A, 0);
    key(KEY_A, 0);
    EXPECT_EQ(events.keysHeld, 0);
    key(KEY_RIGHTMETA, 1);
    key(KEY_A, 1);
    key(KEY_A, 2);
    EXPECT_EQ(events.keysHeld, 2);
    key(KEY_A, 0);
    EXPECT_EQ(state.modifiers(), 0x80);
    key(KEY_RIGHTMETA, 0);
    EXPECT_EQ(state.modifiers(), 0) << "the stuck bit goes when the last key is up";
}

}  // namespace
