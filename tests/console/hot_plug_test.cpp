#include <linux/input-event-codes.h>

#include <filesystem>
#include <thread>

#include "console.h"

/// Devices come and go; the console goes on with what is there and leaves nothing behind.

namespace {

constexpr rig::Milliseconds kRestart{6000};

class HotPlug : public Console {
 protected:
    void expectListening() {
        ASSERT_TRUE(daemon().waitForLine("======>start listenInput<======", kRestart));
    }

    /// The start of a listener tells the box its lights.
    void takeLights() { expectReport(kFirstBox, "lights caps off num off"); }

    void expectPress(int keyboard, std::uint16_t code, std::string_view report) {
        ASSERT_TRUE(board().key(keyboard, code, true));
        expectReport(kFirstBox, report);
    }
};

}  // namespace

TEST_F(HotPlug, ASecondKeyboardJoinsAndTheRestartPrintsItsLinesInOrder) {
    start();
    daemon().skipLines();
    board().plugKeyboard(2);
    for (const char* line :
         {"------------hot event ", " H: Handlers=sysrq kbd event0 ", "H: Handlers=mouse1 event1 ",
          "H: Handlers=sysrq kbd event2 ", "----------", "set string",
          "[SaveConfig]-110: save config succeed", "close all keyboard input device",
          "close all mouse input device", "close all touch input device", "not get newTouch",
          "input thread cancel", "input thread cancel", "get mouse event-->event1",
          "get key event-->event0", "get key event-->event2",
          "mouseEvent-->1 keyevent-->2 touchevent-->0"}) {
        ASSERT_TRUE(daemon().waitForLine(line, kRestart)) << "missing: " << line;
    }
    expectListening();
    takeLights();
    expectPress(2, KEY_B, "key down B");
    expectPress(kKeyboard, KEY_A, "key down A");
}

TEST_F(HotPlug, EverythingThatGoesAndComesBackLeavesNothingBehind) {
    plan.devices.push_back({rig::Kind::kTouch, 2, "ILITEK ILITEK-TP"});
    start();
    daemon().skipLines();
    const int descriptors = daemon().descriptors();
    const int threads = daemon().threads();
    /// A thread that has done its last deed may need a moment more to be gone.
    const auto expectThreads = [&](int count) {
        for (int tries = 0; tries < 100 && daemon().threads() != count; ++tries) {
            std::this_thread::sleep_for(rig::Milliseconds{20});
        }
        EXPECT_EQ(daemon().threads(), count);
    };
    board().unplugAll();
    ASSERT_TRUE(daemon().waitForLine("input thread cancel", kRestart));
    ASSERT_TRUE(daemon().waitForLine("close all touch input device", kRestart));
    EXPECT_EQ(daemon().descriptors(), descriptors - 3);
    expectThreads(threads - 1);
    board().plugMouse(kMouse);
    board().plugKeyboard(kKeyboard);
    board().plugTouch(2, "ILITEK ILITEK-TP");
    ASSERT_TRUE(daemon().waitForLine("end get input info", kRestart));
    takeLights();
    expectPress(kKeyboard, KEY_A, "key down A");
    EXPECT_EQ(daemon().descriptors(), descriptors);
    expectThreads(threads);
}

TEST_F(HotPlug, WhatIsHeldOverARestartIsLetGoAndCountsNothingAfterIt) {
    start();
    expectPress(kKeyboard, KEY_LEFTALT, "modifiers LEFTALT");
    board().emit(kMouse, EV_KEY, BTN_LEFT, 1);
    expectReport(kFirstBox, "pointer 0,0 buttons left");
    daemon().skipLines();
    board().plugMouse(2);
    expectListening();
    expectReport(kFirstBox, "keys up");
    expectReport(kFirstBox, "pointer 0,0 buttons none");
    takeLights();
    expectPress(kKeyboard, KEY_A, "key down A");
    board().key(kKeyboard, KEY_LEFTALT, false);
    expectReport(kFirstBox, "key down A");
    board().unplug(kKeyboard);
    expectListening();
    expectReport(kFirstBox, "keys up");
}

TEST_F(HotPlug, AShortRecordRestartsTheListenerAndSavesNothingAnew) {
    start();
    daemon().skipLines();
    const std::filesystem::path old = board().root() / "data/old.ini";
    std::filesystem::create_hard_link(board().settingsFile(), old);
    ASSERT_TRUE(board().emitPart(kKeyboard));
    for (const char* line : {"read key error or in osd pause 0 len 5", "hot input event",
                             "[SaveConfig]-110: save config succeed"}) {
        ASSERT_TRUE(daemon().waitForLine(line, kRestart)) << "missing: " << line;
    }
    expectListening();
    takeLights();
    EXPECT_TRUE(std::filesystem::equivalent(board().settingsFile(), old));
    expectPress(kKeyboard, KEY_A, "key down A");
}

TEST_F(HotPlug, AsManyDevicesAsTheListsHoldAreProbedInTimeAndTheDeadOneIsDropped) {
    for (int number = 2; number < 9; ++number) {
        plan.devices.push_back({number == 5 ? rig::Kind::kDead : rig::Kind::kKeyboard, number, {}});
        plan.devices.push_back({rig::Kind::kMouse, number + 10, {}});
    }
    for (int number = 20; number < 28; ++number) {
        plan.devices.push_back({rig::Kind::kTouch, number, "ILITEK ILITEK-TP"});
    }
    start();
    EXPECT_THAT(daemon().lines(), ::testing::Contains("get real mouse event 8, keyboard evnet 7"));
    expectPress(8, KEY_A, "key down A");
    board().emit(18, EV_KEY, BTN_LEFT, 1);
    expectReport(kFirstBox, "pointer 0,0 buttons left");
}
