#include <linux/input-event-codes.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "console.h"

/// Devices come and go; the console goes on with what is there and leaves nothing behind.

namespace {

using ::testing::Contains;

constexpr const char* kListening = "======>start listenInput<======";
/// After this line of a listener's start the box knows its lights.
constexpr const char* kUpToDate = "end get input info";
constexpr rig::Milliseconds kRestart{6000};

class HotPlug : public Console {
 protected:
    void expectListening() {
        ASSERT_TRUE(daemon().waitForLine(kListening, kRestart)) << "the listener did not restart";
    }

    /// A thread that has done its last deed may need a moment more to be gone.
    void expectThreads(int count) {
        for (int tries = 0; tries < 100 && daemon().threads() != count; ++tries) {
            std::this_thread::sleep_for(rig::Milliseconds{20});
        }
        EXPECT_EQ(daemon().threads(), count);
    }

    /// The start of a listener tells the box its lights.
    void takeLights() { expectReport(kFirstBox, "lights caps off num off"); }
};

}  // namespace

TEST_F(HotPlug, ASecondKeyboardJoinsAndTheFirstGoesOn) {
    start();
    daemon().skipLines();
    board().plugKeyboard(2);
    expectListening();
    takeLights();
    ASSERT_TRUE(board().key(2, KEY_B, true));
    expectReport(kFirstBox, "key down B");
    ASSERT_TRUE(board().key(2, KEY_B, false));
    expectReport(kFirstBox, "keys up");
    ASSERT_TRUE(board().key(kKeyboard, KEY_A, true));
    expectReport(kFirstBox, "key down A");
}

TEST_F(HotPlug, ARestartPrintsItsLinesInOrder) {
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
}

TEST_F(HotPlug, UnpluggingEverythingAndReplugging) {
    start();
    daemon().skipLines();
    const int descriptors = daemon().descriptors();
    const int threads = daemon().threads();
    board().unplugAll();
    ASSERT_TRUE(daemon().waitForLine("input thread cancel", kRestart));
    ASSERT_TRUE(daemon().waitForLine("close all touch input device", kRestart));
    EXPECT_EQ(daemon().descriptors(), descriptors - 2);
    expectThreads(threads - 1);
    board().plugMouse(1);
    board().plugKeyboard(0);
    expectListening();
    takeLights();
    ASSERT_TRUE(board().key(kKeyboard, KEY_A, true));
    expectReport(kFirstBox, "key down A");
}

TEST_F(HotPlug, ADeviceThatNeverAnswersIsDropped) {
    plan.devices.push_back({rig::Kind::kDead, 2, {}});
    start();
    EXPECT_THAT(daemon().lines(), Contains("get real mouse event 1, keyboard evnet 1"));
    ASSERT_TRUE(board().key(kKeyboard, KEY_A, true));
    expectReport(kFirstBox, "key down A");
}

TEST_F(HotPlug, AKeyHeldWhileItsKeyboardIsPulledIsLetGo) {
    start();
    ASSERT_TRUE(board().key(kKeyboard, KEY_LEFTSHIFT, true));
    expectReport(kFirstBox, "modifiers LEFTSHIFT");
    daemon().skipLines();
    board().unplug(kKeyboard);
    expectListening();
    expectReport(kFirstBox, "keys up");
}

TEST_F(HotPlug, AButtonHeldWhileItsMouseIsPulledIsLetGo) {
    start();
    ASSERT_TRUE(board().emit(kMouse, EV_KEY, BTN_LEFT, 1));
    expectReport(kFirstBox, "pointer 0,0 buttons left");
    daemon().skipLines();
    board().unplug(kMouse);
    expectListening();
    expectReport(kFirstBox, "pointer 0,0 buttons none");
}

TEST_F(HotPlug, AShortRecordRestartsTheListener) {
    start();
    daemon().skipLines();
    const std::filesystem::path old = board().root() / "data/old.ini";
    std::filesystem::create_hard_link(board().settingsFile(), old);
    {
        std::ofstream node(board().node(kKeyboard), std::ios::binary);
        node << "short";
    }
    ASSERT_TRUE(daemon().waitForLine("read key error or in osd pause 0 len 5", kRestart));
    ASSERT_TRUE(daemon().waitForLine("hot input event", kRestart));
    ASSERT_TRUE(daemon().waitForLine("[SaveConfig]-110: save config succeed", kRestart));
    expectListening();
    takeLights();
    EXPECT_TRUE(std::filesystem::equivalent(board().settingsFile(), old))
        << "unchanged settings were written again";
    ASSERT_TRUE(board().key(kKeyboard, KEY_A, true));
    expectReport(kFirstBox, "key down A");
}

/// Once the listener is up, every sleep of the daemon is a fiftieth as long; the probes' waits are
/// as they are.
TEST_F(HotPlug, PlugsAndUnplugsLeaveNothingBehind) {
    constexpr int kRounds = 15;
    plan.virtualClock = true;
    plan.devices.push_back({rig::Kind::kTouch, 2, "ILITEK ILITEK-TP"});
    start();
    const int descriptors = daemon().descriptors();
    const int threads = daemon().threads();
    ASSERT_GT(descriptors, 3);
    ASSERT_GE(threads, 4);
    world().setTime({1000, 0}, 50);
    for (int round = 0; round < kRounds; ++round) {
        daemon().skipLines();
        board().unplug(kMouse);
        ASSERT_TRUE(daemon().waitForLine(kUpToDate, kRestart)) << "round " << round;
        daemon().skipLines();
        board().plugMouse(kMouse);
        ASSERT_TRUE(daemon().waitForLine(kUpToDate, kRestart)) << "round " << round;
    }
    EXPECT_EQ(daemon().descriptors(), descriptors);
    expectThreads(threads);
    box(kFirstBox).clear();
    ASSERT_TRUE(board().key(kKeyboard, KEY_A, true));
    expectReport(kFirstBox, "key down A");
}

TEST_F(HotPlug, AsManyDevicesAsTheListsHoldAreProbedInTime) {
    for (int number = 2; number < 9; ++number) {
        plan.devices.push_back({rig::Kind::kKeyboard, number, {}});
        plan.devices.push_back({rig::Kind::kMouse, number + 10, {}});
    }
    start();
    EXPECT_THAT(daemon().lines(), Contains("get real mouse event 8, keyboard evnet 8"));
    ASSERT_TRUE(board().key(8, KEY_A, true));
    expectReport(kFirstBox, "key down A");
}
