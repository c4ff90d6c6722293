#include <linux/input-event-codes.h>

#include <limits>

#include "unit/input/listener_world.h"

namespace {

using Position = std::pair<std::int32_t, std::int32_t>;

Position pointer() {
    const currentCtl now = currentInfo.copy();
    return {now.pointerX, now.pointerY};
}

struct MouseRules : ListenerWorld {
    void mouse(std::uint16_t type, std::uint16_t code, std::int32_t value) {
        if (events.mouseDevices.count == 0) {
            end = add(events.mouseDevices);
        }
        EXPECT_TRUE(give(end, serveMice, events.mouseDevices.fds[0], {0, 0, type, code, value}));
    }

    int end = -1;
};

TEST_F(MouseRules, RelativeModeWithALocalOsdKeepsYWhereItIs) {
    const struct {
        std::uint8_t rel, qt;
        Position pointer, remote, local;
    } rows[] = {
        {0, 1, {107, 95}, {0, 0}, {0, 0}},
        {0, 0, {107, 95}, {0, 0}, {7, -5}},
        {1, 1, {107, 100}, {7, -5}, {0, 0}},
        {1, 0, {107, 95}, {7, -5}, {7, -5}},
    };
    for (const auto& row : rows) {
        rel_enable = row.rel;
        qtFlag = row.qt;
        setPointer(100, 100);
        events.remoteDx = events.remoteDy = events.localDx = events.localDy = 0;
        mouse(EV_REL, REL_X, 7);
        mouse(EV_REL, REL_Y, -5);
        EXPECT_EQ(pointer(), row.pointer);
        EXPECT_EQ(Position(events.remoteDx, events.remoteDy), row.remote);
        EXPECT_EQ(Position(events.localDx, events.localDy), row.local);
    }
}

TEST_F(MouseRules, TheMouseDrivesAnOutputBoxesOsd) {
    qtFlag = 0;
    osdFlag = 1;
    mouse(EV_REL, REL_X, 300);
    mouse(EV_REL, REL_Y, -2);
    mouse(EV_KEY, BTN_LEFT, 1);
    mouse(EV_KEY, BTN_RIGHT, 1);
    mouse(EV_KEY, BTN_MIDDLE, 1);
    EXPECT_EQ(sent(), Sent{});
    mouse(EV_REL, REL_WHEEL, -1);
    mouse(EV_SYN, 0, 0);
    mouse(EV_SYN, 0, 0);
    // The wheel's report carries the motion and leaves it for the next one.
    EXPECT_EQ(sent(), (Sent{"osd-command 57AB02072CFEFF", "osd-command 57AB02072CFE00",
                            "osd-command 57AB0207000000"}));
    for (const auto& [code, value] : {Position{BTN_RIGHT, 0}, Position{BTN_SIDE, 1}}) {
        mouse(EV_KEY, BTN_LEFT, 1);
        mouse(EV_KEY, static_cast<std::uint16_t>(code), value);
        mouse(EV_SYN, 0, 0);
        EXPECT_EQ(sent(), Sent{"osd-command 57AB0200000000"}) << "every button is up";
    }
    qtFlag = 1;
    mouse(EV_REL, REL_X, 9);
    mouse(EV_SYN, 0, 0);
    EXPECT_EQ(sent(), Sent{}) << "a local OSD reads the mouse itself";
    EXPECT_EQ(pointer(), Position(0, 0));
}

struct TouchRules : ListenerWorld {
    void SetUp() override {
        ListenerWorld::SetUp();
        if (!IsSkipped()) {
            XRIGHT = YDOWN = 1000;
            events.touchMaxX = events.touchMaxY = 1000;
            end = add(events.touchDevices);
        }
    }

    bool touch(std::uint16_t type, std::uint16_t code, std::int32_t value, int milliseconds = 0) {
        return give(end, serveTouch, events.touchDevices.fds[0],
                    {milliseconds / 1000, milliseconds % 1000 * 1000, type, code, value});
    }

    void down(int milliseconds) {
        touch(EV_KEY, BTN_TOUCH, 1, milliseconds);
        touch(EV_ABS, ABS_X, 100, milliseconds);
        touch(EV_ABS, ABS_Y, 200, milliseconds);
    }

    int end = -1;
};

TEST_F(TouchRules, PositionsAreScaledByTheKindOfPanel) {
    const struct {
        std::int32_t type, maxX, maxY;
        Position raw, expected;
    } rows[] = {
        {0, 16384, 16384, {8192, 4096}, {960, 270}},
        {1, 16384, 9600, {16384, 9600}, {1920, 1080}},
        {2, 4080, 4080, {2041, 1}, {960, 0}},
        {3, 32627, 32475, {181, 298}, {0, 0}},
        {3, 32627, 32475, {32627, 32475}, {1909, 1070}},
        {3, 32446, 32173, {16405, 16386}, {960, 540}},
        {3, 32446, 32173, {16404, 16385}, {959, 539}},
        {0, 1000, 1000, {2'000'000, 900}, {3'840'000, 972}},
        {0, 0, 0, {10, 10}, {-1, -1}},  // of an unknown range
    };
    XRIGHT = 1920;
    YDOWN = 1080;
    for (const auto& row : rows) {
        events.touchType = row.type;
        events.touchMaxX = row.maxX;
        events.touchMaxY = row.maxY;
        setPointer(-1, -1);
        touch(EV_ABS, ABS_X, row.raw.first);
        touch(EV_ABS, ABS_Y, row.raw.second);
        EXPECT_EQ(pointer(), row.expected) << "kind " << row.type << " raw " << row.raw.first;
    }
}

TEST_F(TouchRules, ATouchHeldStillIsOneRightClick) {
    constexpr std::int32_t kFar = std::numeric_limits<std::int32_t>::min();
    const struct {
        int after;
        Position at;
        bool clicks;
    } rows[] = {
        {500, {100, 200}, false}, {501, {100, 200}, true},  {501, {115, 185}, true},
        {501, {116, 200}, false}, {501, {100, 184}, false}, {501, {kFar, kFar}, false},
    };
    for (const bool disabled : {false, true}) {
        events.touchLongPressDisabled = disabled;
        for (const auto& row : rows) {
            SCOPED_TRACE(testing::PrintToString(row.at) + testing::PrintToString(row.after));
            state.tapMarked = false;
            down(1700);
            setPointer(row.at.first, row.at.second);
            EXPECT_EQ(sent(), Sent{});
            touch(EV_ABS, ABS_PRESSURE, 1, 1700 + row.after);
            touch(EV_ABS, ABS_PRESSURE, 2, 1700 + row.after);
            const Sent got = sent();
            ASSERT_EQ(got.size(), row.clicks && !disabled ? 2U : 0U);
            if (!got.empty()) {
                EXPECT_EQ(got[0].substr(0, 14), "box 57AB040102");
                EXPECT_EQ(got[1].substr(0, 14), "box 57AB040100");
            }
            touch(EV_KEY, BTN_TOUCH, 0, 3000);
        }
    }
    touch(EV_ABS, ABS_X, 100, 9000);
    touch(EV_ABS, ABS_Y, 200, 9000);
    EXPECT_EQ(sent(), Sent{}) << "nothing touches the panel";
}

TEST_F(TouchRules, TwoTouchesWithin300MillisecondsAreADoubleClick) {
    const Sent clicks{"box 57AB0401010000000000", "box 57AB0401000000000000",
                      "box 57AB0401010000000000", "box 57AB0401000000000000"};
    const std::pair<int, Sent> rows[] = {
        {1000, {}}, {1300, {}}, {1599, clicks}, {1700, {}}, {1999, clicks}};
    for (const auto& [milliseconds, expected] : rows) {
        touch(EV_KEY, BTN_TOUCH, 1, milliseconds);
        EXPECT_EQ(sent(), expected) << milliseconds;
    }
    for (const std::uint16_t button : {std::uint16_t{BTN_RIGHT}, std::uint16_t{BTN_MIDDLE}}) {
        touch(EV_KEY, button, 1, 5000);
        EXPECT_FALSE(state.tapMarked) << "a button is no touch";
    }
}

TEST_F(TouchRules, ThePanelsRightButtonClicksAndForgetsTheContact) {
    down(1000);
    touch(EV_KEY, BTN_RIGHT, 1, 1100);
    EXPECT_EQ(sent(), (Sent{"box 57AB0401026400C80000", "box 57AB0401006400C80000"}));
    EXPECT_FALSE(state.longPressArmed);
    EXPECT_EQ(state.firstX, 0);
    EXPECT_EQ(state.touchBuffer[wire::kButtonsAt], wire::kRight) << "and it is a key, too";
}

TEST_F(TouchRules, PauseAndAShortReadEndTheListenerAndModesDropEvents) {
    events.touchPaused = 1;
    EXPECT_FALSE(touch(EV_ABS, ABS_X, 100));
    osdFlag = 1;
    EXPECT_TRUE(touch(EV_ABS, ABS_X, 100));
    EXPECT_EQ(pointer(), Position(0, 0));
    EXPECT_EQ(write(end, "12345", 5), 5);
    EXPECT_TRUE(serveTouch(state));
    osdFlag = events.touchPaused = 0;
    EXPECT_EQ(write(end, "12345", 5), 5);
    EXPECT_FALSE(serveTouch(state));
}

}  // namespace
