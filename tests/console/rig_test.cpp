#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include "rig/script.h"
#include "rig/status.h"
#include "rig/terminal_keys.h"
#include "words/message.h"

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
        EXPECT_EQ(words::describe(bytes).substr(0, 4), "hex ");
    }
}

TEST(Status, FollowsWhatBoxesAndOsdAreTold) {
    rig::Status status;
    const std::pair<std::pair<const char*, const char*>, const char*> rows[] = {
        {{"box 127.0.0.31", "lights caps off num off"},
         "127.0.0.31 | pointer - | held nothing | computer"},
        {{"box 127.0.0.31", "modifiers LEFTSHIFT"},
         "127.0.0.31 | pointer - | held LEFTSHIFT | computer"},
        {{"box 127.0.0.32", "pointer 3,4 buttons none"},
         "127.0.0.32 | pointer 3,4 | held LEFTSHIFT | computer"},
        {{"osd 41237", "OSDSTART"}, "127.0.0.32 | pointer 3,4 | held LEFTSHIFT | OSD"},
        {{"osd 41238", "keys up"}, "127.0.0.32 | pointer 3,4 | held nothing | OSD"},
        {{"osd 41237", "OSDQUIT"}, "127.0.0.32 | pointer 3,4 | held nothing | computer"}};
    for (const auto& [report, line] : rows) {
        status.saw(report.first, report.second);
        EXPECT_EQ(status.line(), line);
    }
    status.saw("osdSet KVMSTART");
    EXPECT_TRUE(status.line().ends_with("| KVM"));
}

TEST(TypedKeys, TurnsATerminalsBytesIntoKeysAndPointerActions) {
    std::string actions;  // kind and code, modifiers held, movement
    for (const auto& typed :
         rig::typedKeys("a?\x01\x1b[A\x1bOP\x1b[1;3C\x1b[1;4D\x1b\r\x1bx\x1b[5;3~\x1b[99;9Z\x1b")) {
        actions += "kmcw"[static_cast<int>(typed.kind)] + std::to_string(typed.code);
        for (const std::uint16_t held : typed.held) {
            actions += "+" + std::to_string(held);
        }
        actions += " " + std::to_string(typed.dx) + "," + std::to_string(typed.dy) + "\n";
    }
    EXPECT_EQ(
        actions,
        "k30 0,0\nk53+42 0,0\nk30+29 0,0\nk103 0,0\nk59 0,0\nm0 20,0\nm0 -400,0\nc272 0,0\nk45+56 0,0\n"
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
