#include "input/taps.h"

#include "unit/fixture.h"

namespace {

TEST(TapCounter, CountsPressesLessThan600MillisecondsApart) {
    constexpr auto kLater = static_cast<std::int32_t>(0xFEFEFEFE);
    const TapGap gap = gapBetween({10, 5}, {10, 4});
    EXPECT_EQ(std::tuple(gap.seconds, gap.milliseconds, gap.microseconds),
              std::tuple(kLater, kLater, kLater));
    const std::tuple<TimeOfDay, unsigned, const char*> rows[] = {
        {{10, 599'999}, 2, "diff: 000s. 599ms. 999us\n"},
        {{10, 600'000}, 1, "diff: 000s. 600ms. 000us\n"},
        {{11, 100'000}, 1, "diff: 001s. 100ms. 000us\n"},
        {{9, 999'999}, 1, "diff: -01s. -01ms. -01us\n"}};
    for (const auto& [second, expected, line] : rows) {
        TapTiming timing;
        TapCounter counter;
        unsigned count = 0;
        EXPECT_EQ(printedBy([&] { EXPECT_EQ(counter.press(timing, {10, 0}), 1U); }), "");
        EXPECT_EQ(printedBy([&, at = second] { count = counter.press(timing, at); }), line);
        EXPECT_EQ(count, expected) << line;
    }
}

TEST(TapCounter, LatePressStartsOver) {
    TapTiming timing;
    TapCounter ctrl;
    TapCounter alt;
    ctrl.press(timing, {10, 0});
    ctrl.press(timing, {10, 500'000});
    EXPECT_EQ(ctrl.press(timing, {11, 100'000}), 1U);
    EXPECT_EQ(ctrl.press(timing, {11, 699'000}), 2U) << "measured from the one that started";
    EXPECT_EQ(alt.press(timing, {12, 200'000}), 1U);
    EXPECT_EQ(ctrl.press(timing, {12, 700'000}), 3U) << "measured from the other key's tap";
    ctrl.reset();
    EXPECT_EQ(ctrl.press(timing, {12, 701'000}), 1U);
}

}  // namespace
