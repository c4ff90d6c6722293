#include "input/taps.h"

#include <cstdio>

namespace {

constexpr std::int64_t kMicrosecondsPerSecond = 1'000'000;
constexpr std::int32_t kQuickMilliseconds = 600;
constexpr auto kLaterMicroseconds = static_cast<std::int32_t>(0xFEFEFEFE);

}  // namespace

TapGap gapBetween(const TimeOfDay& last, const TimeOfDay& now) {
    if (now.seconds < last.seconds) {
        return {-1, -1, -1};
    }
    if (now.seconds == last.seconds && now.microseconds < last.microseconds) {
        return {kLaterMicroseconds, kLaterMicroseconds, kLaterMicroseconds};
    }
    std::int64_t seconds = now.seconds - last.seconds;
    std::int64_t microseconds = now.microseconds - last.microseconds;
    if (microseconds < 0) {
        --seconds;
        microseconds += kMicrosecondsPerSecond;
    }
    return {static_cast<std::int32_t>(seconds), static_cast<std::int32_t>(microseconds / 1000),
            static_cast<std::int32_t>(microseconds % 1000)};
}

unsigned TapCounter::press(TapTiming& timing, const TimeOfDay& now) {
    bool quick = false;
    if (count_ != 0) {
        const TapGap gap = gapBetween(timing.last, now);
        std::printf("diff: %03ds. %03ldms. %03ldus\n", gap.seconds,
                    static_cast<long>(gap.milliseconds), static_cast<long>(gap.microseconds));
        quick = gap.seconds == 0 && gap.milliseconds < kQuickMilliseconds;
    }
    count_ = quick ? count_ + 1 : 1;
    timing.last = now;
    return count_;
}
