#include <linux/input-event-codes.h>

#include <limits>

#include "unit/input/listener_world.h"

namespace {

using Position = std::pair<std::int32_t, std::int32_t>;

Position pointer() {
    const currentCtl now = currentInfo.copy();
    return {now.pointerX, now.pointerY};
}

/// What goes where is played from outside; these are the rules that hardly show there.
struct PointerRules : ListenerWorld {
    bool mouse(std::uint16_t type, std::uint16_t code, std::int32_t value) {
        return give(events.mouseDevices, serveMice, {0, 0, type, code, value});
    }
    bool touch(std::uint16_t type, std::uint16_t code, std::int32_t value, int ms = 0) {
        return give(events.touchDevices, serveTouch,
                    {ms / 1000, ms % 1000 * 1000, type, code, value});
    }
};

TEST_F(PointerRules, RelativeModeWithALocalOsdKeepsYWhereItIs) {
    struct Row {
        std::uint8_t rel, qt;
        Position pointer, remote, local;
    };
    for (const Row& row :
         {Row{0, 1, {107, 95}, {0, 0}, {0, 0}}, Row{0, 0, {107, 95}, {0, 0}, {7, -5}},
          Row{1, 1, {107, 100}, {7, -5}, {0, 0}}, Row{1, 0, {107, 95}, {7, -5}, {7, -5}}}) {
        rel_enable = row.rel;
        qtFlag = row.qt;
        placePointer(100, 100);
        events.remoteDx = events.remoteDy = events.localDx = events.localDy = 0;
        mouse(EV_REL, REL_X, 7);
        mouse(EV_REL, REL_Y, -5);
        EXPECT_EQ(pointer(), row.pointer);
        EXPECT_EQ(Position(events.remoteDx, events.remoteDy), row.remote);
        EXPECT_EQ(Position(events.localDx, events.localDy), row.local);
    }
}

TEST_F(PointerRules, EveryButtonDrivesAnOutputBoxesOsd) {
    qtFlag = 0;
    osdFlag = 1;
    for (const auto& [code, buttons] :
         {std::pair{BTN_LEFT, 1}, {BTN_RIGHT, 3}, {BTN_MIDDLE, 7}, {BTN_SIDE, 0}}) {
        mouse(EV_KEY, static_cast<std::uint16_t>(code), 1);
        EXPECT_EQ(state.osdButtons, buttons);
    }
}

TEST_F(PointerRules, TouchPositionsAreScaledByTheKindOfPanel) {
    struct Row {
        std::int32_t type, maxX, maxY;
        Position raw, expected;
    };
    for (const Row& row :
         {Row{0, 16384, 16384, {8192, 4096}, {960, 270}},
          Row{1, 16384, 9600, {16384, 9600}, {1920, 1080}}, Row{2, 4080, 4080, {2041, 1}, {960, 0}},
          Row{3, 32627, 32475, {181, 298}, {0, 0}},
          Row{3, 32627, 32475, {32627, 32475}, {1909, 1070}},
          Row{3, 32446, 32173, {16404, 16385}, {959, 539}},
          Row{0, 1000, 1000, {2'000'000, 900}, {3'840'000, 972}},
          Row{0, 0, 0, {10, 10}, {-1, -1}}}) {  // of an unknown range
        events.touchNamed = row.type == 3;      // the offset is that of the named panel alone
        events.touchType = row.type;
        events.touchMaxX = row.maxX;
        events.touchMaxY = row.maxY;
        placePointer(-1, -1);
        touch(EV_ABS, ABS_X, row.raw.first);
        touch(EV_ABS, ABS_Y, row.raw.second);
        EXPECT_EQ(pointer(), row.expected) << "kind " << row.type << " raw " << row.raw.first;
    }
}

TEST_F(PointerRules, ALongPressMovesLittleAndCanBeDisabled) {
    constexpr std::int32_t kFar = std::numeric_limits<std::int32_t>::min();
    events.touchMaxX = XRIGHT = events.touchMaxY = YDOWN = 1000;
    for (const auto& [disabled, at, clicks] : {std::tuple{0, Position{115, 185}, true},
                                               {0, {100, 184}, false},
                                               {0, {kFar, kFar}, false},
                                               {1, {115, 185}, false}}) {
        events.touchLongPressDisabled = disabled != 0;
        state.tapMarked = false;
        touch(EV_KEY, BTN_TOUCH, 1, 1700);
        touch(EV_ABS, ABS_X, 100, 1700);
        touch(EV_ABS, ABS_Y, 200, 1700);
        placePointer(at.first, at.second);
        touch(EV_ABS, ABS_PRESSURE, 1, 2201);
        EXPECT_EQ(box.all(), clicks ? "57 ab 04 01 02 73 00 b9 00 00 | "
                                      "57 ab 04 01 00 73 00 b9 00 00"
                                    : "")
            << testing::PrintToString(at) << " disabled " << disabled;
        touch(EV_KEY, BTN_TOUCH, 0, 3000);
    }
}

TEST_F(PointerRules, PauseAndAShortReadEndTheListenerAndModesDropEvents) {
    events.touchPaused = 1;
    EXPECT_FALSE(touch(EV_ABS, ABS_X, 100));
    osdFlag = 1;
    EXPECT_TRUE(touch(EV_ABS, ABS_X, 100));
    EXPECT_EQ(pointer(), Position(0, 0));
    const int end = add(events.touchDevices);
    FD_ZERO(&state.ready);
    FD_SET(events.touchDevices.fds[1], &state.ready);
    EXPECT_EQ(write(end, "1234512345", 5), 5);
    EXPECT_TRUE(serveTouch(state));
    osdFlag = events.touchPaused = 0;
    EXPECT_EQ(write(end, "12345", 5), 5);
    EXPECT_FALSE(serveTouch(state));
}

}  // namespace
