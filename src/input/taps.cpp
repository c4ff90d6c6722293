#include "input/taps.h"

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

Tap TapCounter::press(TapTiming& timing, const TimeOfDay& now) {
    Tap tap;
    bool quick = false;
    if (count_ != 0) {
        tap.gap = gapBetween(timing.last, now);
        quick = tap.gap->seconds == 0 && tap.gap->milliseconds < kQuickMilliseconds;
    }
    count_ = quick ? count_ + 1 : 1;
    timing.last = now;
    tap.count = count_;
    return tap;
}
