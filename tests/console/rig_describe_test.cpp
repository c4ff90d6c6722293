#include <gtest/gtest.h>

#include "rig/describe.h"
#include "rig/terminal_keys.h"

#include <linux/input-event-codes.h>

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
    using Kind = rig::Typed::Kind;
    const auto typed =
        rig::typedKeys("a?\x01\x1b[A\x1bOP\x1b[1;3C\x1b\r\x1bx\x1b[5;3~\x1b[99;9Z\x1b");
    struct Row {
        Kind kind;
        int code;
        std::vector<std::uint16_t> held;
        int dx;
        int dy;
    };
    const std::vector<Row> rows = {
        {Kind::kKey, KEY_A, {}, 0, 0},
        {Kind::kKey, KEY_SLASH, {KEY_LEFTSHIFT}, 0, 0},
        {Kind::kKey, KEY_A, {KEY_LEFTCTRL}, 0, 0},
        {Kind::kKey, KEY_UP, {}, 0, 0},
        {Kind::kKey, KEY_F1, {}, 0, 0},
        {Kind::kMove, 0, {}, 20, 0},
        {Kind::kClick, BTN_LEFT, {}, 0, 0},
        {Kind::kKey, KEY_X, {KEY_LEFTALT}, 0, 0},
        {Kind::kWheel, 0, {}, 0, 1},
        {Kind::kKey, KEY_ESC, {}, 0, 0},
    };
    ASSERT_EQ(typed.size(), rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(typed[i].kind, rows[i].kind) << "action " << i;
        EXPECT_EQ(typed[i].code, rows[i].code) << "action " << i;
        EXPECT_EQ(typed[i].held, rows[i].held) << "action " << i;
        EXPECT_EQ(typed[i].dx, rows[i].dx) << "action " << i;
        EXPECT_EQ(typed[i].dy, rows[i].dy) << "action " << i;
    }
}

}  // namespace
