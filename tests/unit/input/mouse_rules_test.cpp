#include "input/mouse_rules.h"

#include "unit/input/rule_world.h"

namespace {

struct Mouse : RuleWorld {
    std::string give(std::uint16_t type, std::uint16_t code = 0, std::int32_t value = 0) {
        const InputRecord record{0, 0, type, code, value};
        state.modes().areOff() ? rules.serve(record) : rules.serveForOsd(record);
        return sink.take();
    }
    std::string button(std::uint16_t code, std::int32_t value) { return give(EV_KEY, code, value); }

    MouseRules rules{state, sink};
};

TEST_F(Mouse, APacketsEndAButtonAndTheWheelAreTold) {
    placePointer(412, 300);
    EXPECT_EQ(give(EV_SYN), "pointer 0 at 412,300");
    EXPECT_EQ(give(EV_REL, REL_WHEEL, -1), "pointer 0 at 412,300 wheel -1");
    EXPECT_EQ(sink.takeLines(), "is wheel\n");
    EXPECT_EQ(button(BTN_LEFT, 1), "pointer 1 at 412,300 wheel -1") << "the wheel as it stands";
    EXPECT_EQ(give(EV_SYN), "pointer 1 at 412,300");
    EXPECT_EQ(button(BTN_RIGHT, 1), "pointer 3 at 412,300");
    EXPECT_EQ(give(EV_MSC, BTN_MIDDLE, 1), "pointer 7 at 412,300") << "whatever the type";
    EXPECT_EQ(button(BTN_SIDE, 0), "pointer 7 at 412,300");
    EXPECT_EQ(button(BTN_LEFT, 0), "pointer 0 at 412,300");
    EXPECT_EQ(button(KEY_A, 1) + give(EV_REL, REL_HWHEEL, 1) + give(EV_REL, REL_X, 1), "");
}

TEST_F(Mouse, CrossesBeyondAnEdgeAndIsHeldAtTheFarOnes) {
    const struct {
        Position at;
        std::uint16_t axis;
        std::int32_t by;
        const char* said;
        Position after;
    } rows[] = {
        {{1919, 9}, REL_X, 1, "", {1920, 9}},
        {{1919, 9}, REL_X, 2, "cross right", {1920, 9}},
        {{1, 9}, REL_X, -1, "", {0, 9}},
        {{1, 9}, REL_X, -2, "cross left", {-1, 9}},
        {{9, 1078}, REL_Y, 1, "", {9, 1079}},
        {{9, 1078}, REL_Y, 2, "cross down", {9, 1080}},
        {{9, 1}, REL_Y, -1, "", {9, 0}},
        {{9, 1}, REL_Y, -3, "cross up", {9, -2}},
        {{9, 1}, REL_X, 2147483647, "cross right", {1920, 1}},
        {{-9, -9}, REL_Y, -2147483647 - 1, "cross up", {-9, -2147483647 - 1}},
    };
    for (const auto& row : rows) {
        placePointer(row.at.x, row.at.y);
        EXPECT_EQ(give(EV_REL, row.axis, row.by), row.said) << "row " << &row - rows;
        EXPECT_EQ(pointer(), row.after) << "row " << &row - rows;
    }
    sink.onCommand = [&] {
        state.box.XRIGHT = 1280;
        placePointer(1300, 5);
    };
    give(EV_REL, REL_X, 4000);
    EXPECT_EQ(pointer(), Position(1280, 5)) << "at the edge of the picture then shown";
    state.box.rel_enable = true;
    EXPECT_EQ(give(EV_REL, REL_X, -9000), "") << "a relative box is never left by an edge";
}

TEST_F(Mouse, RelativeModeWithALocalOsdKeepsYWhereItIs) {
    struct Row {
        bool relative, here;
        Position pointer;
        std::pair<std::int32_t, std::int32_t> remote, local;
    };
    for (const Row& row : {Row{false, true, {107, 95}, {0, 0}, {0, 0}},
                           Row{false, false, {107, 95}, {0, 0}, {7, -5}},
                           Row{true, true, {107, 100}, {7, -5}, {0, 0}},
                           Row{true, false, {107, 95}, {7, -5}, {7, -5}}}) {
        state.box.rel_enable = row.relative;
        state.osdIsHere = row.here;
        placePointer(100, 100);
        Motion& motion = console.motion;
        motion.localDx = motion.localDy = 0;
        give(EV_REL, REL_X, 7);
        give(EV_REL, REL_Y, -5);
        EXPECT_EQ(pointer(), row.pointer);
        EXPECT_EQ(motion.takeRemote(), row.remote);
        EXPECT_EQ(std::pair(motion.localDx.load(), motion.localDy.load()), row.local);
    }
}

TEST_F(Mouse, DrivesTheOsdOfAnOutputBoxWhileAModeIsOn) {
    setModes("o");
    EXPECT_EQ(give(EV_REL, REL_X, 3) + give(EV_SYN), "") << "an OSD here needs no mouse of ours";
    EXPECT_EQ(console.motion.localDx, 0);
    state.osdIsHere = false;
    for (const auto& [code, buttons] :
         {std::pair{BTN_LEFT, 1}, {BTN_RIGHT, 3}, {BTN_MIDDLE, 7}, {BTN_SIDE, 0}}) {
        EXPECT_EQ(button(static_cast<std::uint16_t>(code), 1), "");
        EXPECT_EQ(give(EV_SYN), "here: 57 ab 02 0" + std::to_string(buttons) + " 00 00 00 +osd");
    }
    give(EV_REL, REL_X, 3);
    give(EV_REL, REL_Y, -2);
    button(BTN_LEFT, 1);
    button(BTN_RIGHT, 0);
    EXPECT_EQ(button(KEY_A, 1), "");
    EXPECT_EQ(give(EV_REL, REL_WHEEL, -1), "here: 57 ab 02 00 03 fe ff +osd");
    EXPECT_EQ(sink.takeLines(), "send mouse wheel 0x-1\n");
    EXPECT_EQ(give(EV_SYN), "here: 57 ab 02 00 03 fe 00 +osd");
    EXPECT_EQ(give(EV_SYN), "here: 57 ab 02 00 00 00 00 +osd") << "motion is told once";
    EXPECT_EQ(pointer(), Position(0, 0)) << "the box's pointer rests";
}

}  // namespace
