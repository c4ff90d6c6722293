#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include "rig/script.h"

namespace {

using Kind = rig::Step::Kind;

TEST(ScriptParser, ReadsTheBoardThenTheSteps) {
    const auto parsed = rig::parseScript(
        "# the board\n"
        "wall 0,0,10.0.0.1#0,0,10.0.0.2\n"
        "mode dma\n"
        "keyboard event4 \"Desk\"\n"
        "touch event5 Siliconworks\n"
        "box 127.0.0.9 8080 silent\n"
        "\n"
        "KEY_A down; SYN; event9: REL_X -5\n"
        "+600ms\n"
        "box 127.0.0.9  key down A\n"
        "line \" a line \"\n"
        "send 41236 [seq]\\nx\n"
        "plug mouse event7\n",
        "test");
    ASSERT_TRUE(parsed.script) << parsed.problem;
    const rig::Plan& plan = parsed.script->plan;
    EXPECT_EQ(plan.wall, std::vector<std::string>{"0,0,10.0.0.1#0,0,10.0.0.2"});
    EXPECT_FALSE(plan.osd);
    ASSERT_EQ(plan.devices.size(), 2U);
    EXPECT_EQ(plan.devices[0].name, "Desk");
    ASSERT_EQ(plan.boxes.size(), 1U);
    EXPECT_FALSE(plan.boxes[0].answer);

    const auto& steps = parsed.script->steps;
    ASSERT_EQ(steps.size(), 6U);
    ASSERT_EQ(steps[0].events.size(), 3U);
    EXPECT_EQ(steps[0].line, 8);
    EXPECT_EQ(steps[0].events[0].node, 4);
    EXPECT_EQ(steps[0].events[1].node, 4) << "the end of a packet goes where the packet went";
    EXPECT_EQ(steps[0].events[2].node, 9);
    EXPECT_EQ(steps[0].events[2].value, -5);
    EXPECT_EQ(steps[1].pause, rig::Milliseconds(600));
    EXPECT_EQ(steps[2].kind, Kind::kBox);
    EXPECT_EQ(steps[2].text, "key down A");
    EXPECT_EQ(steps[3].text, " a line ");
    EXPECT_EQ(steps[4].text, "[seq]\nx");
    EXPECT_EQ(steps[5].device.number, 7);
}

TEST(ScriptParser, RefusesALineThatMakesNoSense) {
    for (const char* line :
         {"KEY_NOWHERE down", "KEY_A sideways", "REL_X", "ABS_X 5", "SYN", "+5s", "box",
          "osd here x", "send 41236", "plug lamp event3", "unplug 3", "nothing here", "mode tv",
          "KEY_A down;", "line", "event: KEY_A down", "kbd0: KEY_A down", "keyboard 3"}) {
        const auto parsed = rig::parseScript(std::string("quick\n") + line + "\n", "test");
        EXPECT_FALSE(parsed.script) << line;
        EXPECT_EQ(parsed.problem, std::string("test:2: makes no sense: ") + line);
    }
}

}  // namespace
