#include "input/taps.h"

#include <gtest/gtest.h>

#include <array>

#include "unit/net/open_socket.h"

namespace {

TEST(TapGap, OfALaterLastTapIsNoQuickOne) {
    const auto gap = [](const TimeOfDay& last, const TimeOfDay& now) {
        const TapGap got = gapBetween(last, now);
        return std::array{got.seconds, got.milliseconds, got.microseconds};
    };
    EXPECT_EQ(gap({10, 500'000}, {12, 400'001}), (std::array{1, 900, 1}));
    EXPECT_EQ(gap({10, 0}, {9, 999'999}), (std::array{-1, -1, -1}));
    constexpr auto kLater = static_cast<std::int32_t>(0xFEFEFEFE);
    EXPECT_EQ(gap({10, 5}, {10, 4}), (std::array{kLater, kLater, kLater}));
}

TEST(TapCounter, CountsPressesLessThan600MillisecondsApart) {
    const struct {
        TimeOfDay second;
        unsigned count;
        const char* line;
    } rows[] = {
        {{10, 599'999}, 2, "diff: 000s. 599ms. 999us\n"},
        {{10, 600'000}, 1, "diff: 000s. 600ms. 000us\n"},
        {{11, 0}, 1, "diff: 001s. 000ms. 000us\n"},
        {{11, 100'000}, 1, "diff: 001s. 100ms. 000us\n"},
        {{9, 999'999}, 1, "diff: -01s. -01ms. -01us\n"},
    };
    for (const auto& row : rows) {
        TapTiming timing;
        TapCounter counter;
        EXPECT_EQ(printedBy([&] { EXPECT_EQ(counter.press(timing, {10, 0}), 1U); }), "");
        EXPECT_EQ(printedBy([&] { EXPECT_EQ(counter.press(timing, row.second), row.count); }),
                  row.line);
    }
}

TEST(TapCounter, LatePressStartsOver) {
    TapTiming timing;
    TapCounter ctrl;
    TapCounter alt;
    printedBy([&] {
        ctrl.press(timing, {10, 0});
        ctrl.press(timing, {10, 500'000});
        EXPECT_EQ(ctrl.press(timing, {11, 100'000}), 1U);
        EXPECT_EQ(ctrl.press(timing, {11, 699'000}), 2U) << "measured from the one that started";
        EXPECT_EQ(alt.press(timing, {12, 200'000}), 1U);
        EXPECT_EQ(ctrl.press(timing, {12, 700'000}), 3U) << "measured from the other key's tap";
        ctrl.reset();
        EXPECT_EQ(ctrl.press(timing, {12, 701'000}), 1U);
    });
}

}  // namespace
