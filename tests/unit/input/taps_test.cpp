#include "input/taps.h"

#include <gtest/gtest.h>

namespace {

TEST(TapCounter, CountsAPressLessThan600MillisecondsAfterTheLast) {
    constexpr auto kLater = static_cast<std::int32_t>(0xFEFEFEFE);
    const struct {
        TimeOfDay second;
        TapGap gap;
        unsigned count;
    } rows[] = {{{10, 900'000}, {0, 400, 0}, 2}, {{11, 99'999}, {0, 599, 999}, 2},
                {{11, 100'000}, {0, 600, 0}, 1}, {{11, 600'001}, {1, 100, 1}, 1},
                {{9, 999'999}, {-1, -1, -1}, 1}, {{10, 499'999}, {kLater, kLater, kLater}, 1},
                {{10, 500'000}, {0, 0, 0}, 2}};
    for (const auto& [second, gap, count] : rows) {
        TapTiming timing;
        TapCounter counter;
        const Tap first = counter.press(timing, {10, 500'000});
        EXPECT_TRUE(first.count == 1 && !first.gap);
        const Tap tap = counter.press(timing, second);
        ASSERT_TRUE(tap.gap);
        EXPECT_EQ(std::tuple(tap.gap->seconds, tap.gap->milliseconds, tap.gap->microseconds),
                  std::tuple(gap.seconds, gap.milliseconds, gap.microseconds));
        EXPECT_EQ(tap.count, count) << second.seconds << "." << second.microseconds;
    }
}

}  // namespace
