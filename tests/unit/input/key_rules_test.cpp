#include <linux/input-event-codes.h>

#include "control/hotkey_table.h"
#include "unit/input/listener_world.h"

namespace {

/// What goes where is played from outside; these are the rules that hardly show there.
struct KeyRules : ListenerWorld {
    /// A key event; what the box got for it.
    std::string key(std::uint16_t code, std::int32_t value) {
        EXPECT_TRUE(give(events.keyDevices, serveKeyboards, {0, 0, EV_KEY, code, value}));
        return box.all();
    }
};

TEST_F(KeyRules, WithALocalOsdTheAltCounterStaysAtThree) {
    KvmSetSocket = nullptr;  // no command leaves here for an OSD of this machine
    for (int tap = 1; tap <= 6; ++tap) {
        handlePress(state, 0, KEY_LEFTALT);
        EXPECT_EQ(box.all(), tap == 3 ? "" : "57 ab 01 04 00 00 00 00 00 00 00") << "tap " << tap;
    }
    EXPECT_EQ(events.previewMode, 0) << "the OSD sets the mode itself";
}

TEST_F(KeyRules, KeysForAnOutputBoxesOsdCarryTheLockByteOnce) {
    Box osd{ownAddress(), wire::kOsdKeyPort};
    qtFlag = 0;
    osdFlag = 1;
    for (const unsigned locks : {0U, 1U, 2U, 3U}) {
        events.capsLockOn = locks % 2 != 0;
        events.numLockOn = locks > 1;
        handlePress(state, 0, KEY_A);
        EXPECT_EQ(osd.all(), "57 ab 01 00 00 04 00 00 00 00 00 0" + std::to_string(locks));
    }
}

TEST_F(KeyRules, TheLookUpsIndexGoesOnAsTheKeyboards) {
    struct Row {
        const char* hotkeys;
        int presser;
        const char* left;  ///< which keyboards still have their event after one pass
    };
    for (const Row& row : {Row{"", 0, ""},                        // no match in 0: slot 1
                           Row{"LEFTCTRL+A", 0, ""},              // match at 0: slot 1
                           Row{"LEFTCTRL+B#LEFTCTRL+A", 0, "1"},  // match at 1: slot 2
                           Row{"LEFTCTRL+B#LEFTALT+A", 0, "12"},  // no match in 2: slot 3
                           Row{"LEFTCTRL+A", 2, ""}}) {           // back to 1, now empty
        hotkeyinfo_.set(parseHotkeys(row.hotkeys, false).table);
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
        std::string left;
        for (std::size_t i = 0; i < 3; ++i) {
            pollfd wait{events.keyDevices.fds[i], POLLIN, 0};
            left += poll(&wait, 1, 0) == 1 ? std::to_string(i) : "";
        }
        EXPECT_EQ(left, row.left) << row.hotkeys;
    }
    hotkeyinfo_.set({});
}

TEST_F(KeyRules, TheHeldCountHasAFloorAndAtZeroNothingIsRemembered) {
    EXPECT_EQ(key(KEY_F14, 0), "") << "a release that is never sent";
    EXPECT_EQ(key(KEY_A, 0), kKeysUp);
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
