#include <linux/input-event-codes.h>

#include "console.h"

namespace {

class VirtualBoard : public Console {};

TEST_F(VirtualBoard, ADeadNodeDoesNotAnswerAndALivingOneDoes) {
    plan.devices.push_back({rig::Kind::kDead, 2, ""});
    start();
    expectNothing();
    EXPECT_THAT(daemon().lines(), testing::Contains("get real mouse event 1, keyboard evnet 1"));
    EXPECT_GE(daemon().threads(), 4);
    EXPECT_GT(daemon().descriptors(), 3);
    EXPECT_GT(daemon().peakMemoryKiB(), 0);
    EXPECT_GE(daemon().cpuSeconds(), 0);
    board().key(kKeyboard, KEY_A, true);
    expectReport(kFirstBox, "key down A");
}

TEST_F(VirtualBoard, AKeyboardThatComesBackIsServedAgain) {
    start();
    board().unplugAll();
    expectLine("input thread cancel");
    EXPECT_FALSE(board().key(kKeyboard, KEY_A, true)) << "nobody can read a node that is gone";
    board().plugKeyboard(3);
    board().plugMouse(4);
    expectLine("======>start listenInput<======");
    expectReport(kFirstBox, "lights caps off num off");
    board().key(3, KEY_B, true);
    expectReport(kFirstBox, "key down B");
    expectNothing();
}

TEST_F(VirtualBoard, ASilentBoxIsAskedButHeardOfNoMore) {
    plan.boxes = {{{kFirstBox, 8080}, std::nullopt}};
    start();
    EXPECT_GE(box(kFirstBox).queries(), 1);
    for (const std::string& line : daemon().lines()) {
        EXPECT_FALSE(line.starts_with("get ip:")) << line;
    }
    board().move(kMouse, 7, 9);
    expectReport(kFirstBox, "pointer 7,9 buttons none");
}

}  // namespace
