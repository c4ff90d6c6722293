#include "input/touch_rules.h"

#include "unit/input/rule_world.h"

namespace {

/// A panel of 1000 x 1000 over a picture of that size, in milliseconds of the records.
struct Touch : RuleWorld {
    Touch() { state.box.XRIGHT = state.box.YDOWN = panel.touchMaxX = panel.touchMaxY = 1000; }

    std::string give(std::uint16_t type, std::uint16_t code, std::int32_t value, int ms = 0) {
        rules.serve({ms / 1000, ms % 1000 * 1000, type, code, value});
        return sink.take();
    }
    std::string move(std::int32_t x, std::int32_t y, int ms = 0) {
        const std::string said = give(EV_ABS, ABS_X, x, ms);
        return said + give(EV_ABS, ABS_Y, y, ms);
    }
    std::string contact(int ms, std::uint16_t code = BTN_TOUCH) {
        return give(EV_KEY, code, 1, ms);
    }
    std::string lift(int ms) { return give(EV_KEY, BTN_TOUCH, 0, ms); }
    std::string flush() { return give(EV_SYN, SYN_REPORT, 0); }

    TouchPanel panel;
    TouchRules rules{state, sink, panel};
};

TEST_F(Touch, PositionAndContactAreToldAtTheEndOfThePacket) {
    EXPECT_EQ(flush(), "") << "nothing is known yet";
    EXPECT_EQ(move(100, 200), "");
    EXPECT_EQ(sink.takeLines(), "x get-->100\ny get-->200\n");
    move(101, 201);
    EXPECT_EQ(sink.takeLines(), "") << "the first of a contact only";
    EXPECT_EQ(flush(), "raw 0 at 101,201");
    EXPECT_EQ(contact(0), "");
    EXPECT_EQ(flush(), "raw 1 at 101,201");
    give(EV_KEY, BTN_TOOL_FINGER, 1);
    EXPECT_EQ(flush(), "raw 1 at 101,201");
    EXPECT_EQ(lift(100), "");
    EXPECT_EQ(sink.takeLines(), "is wheel\nis wheel\nis wheel\n");
    move(102, 0);
    EXPECT_EQ(sink.takeLines(), "x get-->102\ny get-->0\n");
    state.box.rel_enable = true;
    console.motion.remoteDx = 5;
    move(103, 0);
    EXPECT_EQ(flush(), "raw 0 at 103,0") << "absolute whatever the box takes";
    EXPECT_EQ(console.motion.remoteDx, 0);
}

TEST_F(Touch, PositionsAreScaledFromWhereThePanelsScaleBegins) {
    const struct {
        Position maximum, offset, raw, expected;
    } rows[] = {
        {{16384, 16384}, {}, {8192, 4096}, {960, 270}},
        {{16384, 9600}, {}, {16384, 9600}, {1920, 1080}},
        {{4080, 4080}, {}, {2041, 1}, {960, 0}},
        {{32627, 32475}, {182, 299}, {0, 0}, {0, 0}},
        {{32627, 32475}, {182, 299}, {182, 299}, {0, 0}},
        {{32627, 32475}, {182, 299}, {32627, 32475}, {1909, 1070}},
        {{32446, 32173}, {182, 299}, {16404, 16385}, {959, 539}},
        {{1000, 1000}, {}, {2'000'000, 900}, {3'840'000, 972}},
        {{1000, 0}, {}, {10, 10}, {-1, -1}},  // of an unknown range
        {{0, 1000}, {}, {10, 10}, {-1, -1}},
    };
    state.box.XRIGHT = 1920, state.box.YDOWN = 1080;
    for (const auto& row : rows) {
        panel.touchMaxX = row.maximum.x, panel.touchMaxY = row.maximum.y;
        panel.offsetX = row.offset.x, panel.offsetY = row.offset.y;
        placePointer(-1, -1);
        move(row.raw.x, row.raw.y);
        EXPECT_EQ(pointer(), row.expected) << "row " << &row - rows;
    }
}

TEST_F(Touch, ALongPressIsMoreThan500MillisecondsWithin15Pixels) {
    struct Row {
        std::uint16_t code;
        int ms;
        Position to;
        const char* lines;
    };
    int start = 1700;
    for (const Row& row : {Row{BTN_TOUCH, 501, {115, 185}, "mv(15,15)\nRIGHT BTN\n"},
                           {BTN_LEFT, 501, {85, 215}, "mv(15,15)\nRIGHT BTN\n"},
                           {BTN_TOUCH, 500, {115, 185}, ""},
                           {BTN_TOUCH, 501, {100, 216}, "mv(0,16)\n"},
                           {BTN_TOUCH, 501, {84, 200}, "mv(16,0)\n"},
                           {BTN_TOOL_FINGER, 501, {100, 200}, ""}}) {  // no contact
        SCOPED_TRACE(testing::Message() << row.code << " " << row.ms << row.lines);
        contact(start, row.code);
        move(100, 200, start);
        placePointer(row.to.x, row.to.y);
        sink.takeLines();
        const bool clicks = std::string(row.lines).ends_with("BTN\n");
        const std::string at = std::to_string(row.to.x) + "," + std::to_string(row.to.y);
        EXPECT_EQ(give(EV_ABS, ABS_PRESSURE, 1, start + row.ms),
                  clicks ? "raw 2 at " + at + " | pause 20 | raw 0 at " + at : "");
        EXPECT_EQ(sink.takeLines(), row.lines);
        EXPECT_EQ(clicks ? give(EV_ABS, ABS_PRESSURE, 1, start + 900) : "", "") << "once";
        lift(start + 1000);
        EXPECT_EQ(give(EV_ABS, ABS_PRESSURE, 1, start + 1200), "") << "lifted";
        start += 5000;
    }
    placePointer(0, 0);
    contact(start);
    move(100, 200, start);
    placePointer(-2147483647 - 1, 2147483647);
    sink.takeLines();
    give(EV_ABS, ABS_PRESSURE, 1, start + 600);
    EXPECT_EQ(sink.takeLines(), "mv(2147483647,2147483447)\n") << "distances stay within 32 bits";
}

TEST_F(Touch, ASecondContactWithin300MillisecondsIsADoubleClick) {
    const std::string twice =
        "raw 1 at 500,500 | raw 0 at 500,500 | raw 1 at 500,500 | raw 0 at 500,500";
    move(500, 500);
    EXPECT_EQ(contact(1000), "");
    EXPECT_EQ(contact(1300), "") << "a first one again";
    EXPECT_EQ(contact(1599), twice);
    EXPECT_EQ(contact(1600), "") << "the third begins anew";
    EXPECT_EQ(give(EV_KEY, BTN_TOOL_FINGER, 1, 1700), "") << "no contact";
    EXPECT_EQ(contact(1899, BTN_LEFT), twice);
}

TEST_F(Touch, ThePanelsRightButtonClicksAndEndsThePress) {
    placePointer(30, 40);
    EXPECT_EQ(give(EV_KEY, BTN_RIGHT, 1), "raw 2 at 30,40 | raw 0 at 30,40") << "as first record";
    EXPECT_EQ(flush(), "raw 2 at 30,40");
    give(EV_KEY, BTN_RIGHT, 0);
    EXPECT_EQ(sink.takeLines(), "get button right\nis wheel\nis wheel\n");
    contact(1000);
    move(100, 200, 1000);
    EXPECT_EQ(give(EV_KEY, BTN_RIGHT, 1, 1100), "raw 2 at 100,200 | raw 0 at 100,200");
    move(100, 200, 1200);
    EXPECT_EQ(give(EV_ABS, ABS_PRESSURE, 1, 1600), "") << "no long press any more";
}

}  // namespace
