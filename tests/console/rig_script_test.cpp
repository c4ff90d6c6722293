#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include "rig/script.h"

namespace {

TEST(ScriptParser, RefusesALineThatMakesNoSense) {
    for (const char* line : {"KEY_NOWHERE down", "KEY_A sideways", "REL_X", "ABS_X 5", "SYN", "+5s",
                             "box", "osd here x", "send 41236", "plug lamp event3", "unplug 3",
                             "nothing here", "mode tv", "KEY_A down;", "KEY_A down => lamp", "line",
                             "event: KEY_A down", "kbd0: KEY_A down", "keyboard 3"}) {
        const auto parsed = rig::parseScript(std::string("quick\n") + line + "\n", "test");
        EXPECT_FALSE(parsed.script) << line;
        EXPECT_EQ(parsed.problem, std::string("test:2: makes no sense: ") + line);
    }
}

}  // namespace
