#include "input/taps.h"

#include <gtest/gtest.h>

#include <string>

#include "unit/net/open_socket.h"

namespace {

TapGap gap(std::int32_t seconds, std::int32_t milliseconds, std::int32_t microseconds) {
    return {seconds, milliseconds, microseconds};
}

std::string text(const TapGap& gap) {
    return std::to_string(gap.seconds) + "s " + std::to_string(gap.milliseconds) + "ms " +
           std::to_string(gap.microseconds) + "us";
}

constexpr std::int32_t kLater = -16843010;  // 0xFEFEFEFE

TEST(TapGap, IsSplitIntoSecondsMillisecondsAndMicroseconds) {
    const struct {
        TimeOfDay last, now;
        TapGap expected;
    } rows[] = {
        {{10, 0}, {10, 0}, gap(0, 0, 0)},
        {{10, 100}, {10, 599'999}, gap(0, 599, 899)},
        {{10, 999'999}, {11, 0}, gap(0, 0, 1)},
        {{10, 500'000}, {12, 400'001}, gap(1, 900, 1)},
        {{10, 0}, {9, 999'999}, gap(-1, -1, -1)},
        {{10, 5}, {10, 4}, gap(kLater, kLater, kLater)},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(text(gapBetween(row.last, row.now)), text(row.expected));
    }
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
    TapCounter counter;
    counter.press(timing, {10, 0});
    counter.press(timing, {10, 500'000});
    EXPECT_EQ(counter.press(timing, {11, 100'000}), 1U);
    EXPECT_EQ(counter.press(timing, {11, 699'000}), 2U) << "measured from the press that started";
    EXPECT_EQ(counter.press(timing, {12, 200'000}), 3U);
    counter.reset();
    EXPECT_EQ(counter.press(timing, {12, 201'000}), 1U);
}

TEST(TapCounter, MeasuresFromTheLastTapOfAnyCounter) {
    TapTiming timing;
    TapCounter ctrl;
    TapCounter alt;
    ctrl.press(timing, {10, 0});
    alt.press(timing, {10, 500'000});
    EXPECT_EQ(ctrl.press(timing, {11, 0}), 2U) << "500 ms after the other key's tap";
}

}  // namespace
