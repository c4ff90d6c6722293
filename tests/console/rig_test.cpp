#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include "rig/describe.h"
#include "rig/script.h"
#include "rig/terminal_keys.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(Describe, ShowsWhatIsNotQuiteAReportAsBytes) {
    const Bytes rows[] = {
        {0x57, 0xAB, 0x01, 0, 1, 0, 0, 0, 0, 0, 0},  // reserved byte set
        {0x57, 0xAB, 0x01, 0, 0, 0, 0, 0, 0, 0},     // one byte short
        {0x57, 0xAB, 0x04, 0x02, 0, 0, 0, 0, 0, 0},  // wrong fourth byte
        {0x4B, 0, 2, 7, 0, 0, 0, 0, 0, 1, 2},        // wheel bytes that differ
        {0, 0, 0},
    };
    for (const Bytes& bytes : rows) {
        EXPECT_EQ(rig::describe(bytes).substr(0, 4), "hex ");
    }
}

TEST(TypedKeys, TurnsATerminalsBytesIntoKeysAndPointerActions) {
    std::string actions;  // kind and code, modifiers held, movement
    for (const auto& typed :
         rig::typedKeys("a?\x01\x1b[A\x1bOP\x1b[1;3C\x1b\r\x1bx\x1b[5;3~\x1b[99;9Z\x1b")) {
        actions += "kmcw"[static_cast<int>(typed.kind)] + std::to_string(typed.code);
        for (const std::uint16_t held : typed.held) {
            actions += "+" + std::to_string(held);
        }
        actions += " " + std::to_string(typed.dx) + "," + std::to_string(typed.dy) + "\n";
    }
    EXPECT_EQ(actions,
              "k30 0,0\nk53+42 0,0\nk30+29 0,0\nk103 0,0\nk59 0,0\nm0 20,0\nc272 0,0\nk45+56 0,0\n"
              "w0 0,1\nk1 0,0\n");
}

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
