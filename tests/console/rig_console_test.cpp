#include <linux/input-event-codes.h>

#include "console.h"

namespace {

class VirtualBoard : public Console {};

TEST_F(VirtualBoard, ReadsTheRunningProgram) {
    start();
    EXPECT_TRUE(daemon().running());
    EXPECT_GE(daemon().threads(), 4);
    EXPECT_GT(daemon().descriptors(), 3);
    EXPECT_GT(daemon().peakMemoryKiB(), 100);
    EXPECT_GE(daemon().cpuSeconds(), 0);
}

TEST_F(VirtualBoard, ANodeThatIsGoneTakesNoRecord) {
    start();
    board().unplugAll();
    EXPECT_FALSE(board().key(kKeyboard, KEY_A, true));
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
