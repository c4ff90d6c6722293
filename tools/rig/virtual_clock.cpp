#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "app/base/clock.h"

/// The clock of a virtual board. The program tavrik-virtual is the daemon with this in the place of
/// the system's clock, so that a script can put two taps 599 or 600 ms apart to the microsecond.
///
/// TAVRIK_CLOCK names a file that holds the time of day as "seconds microseconds"; without it the
/// system's time counts. TAVRIK_SPEED (1 to 1000) divides every sleep.

namespace {

std::int64_t speed() {
    static const std::int64_t value = [] {
        const char* text = std::getenv("TAVRIK_SPEED");
        const long number = text != nullptr ? std::strtol(text, nullptr, 10) : 1;
        return number >= 1 && number <= 1000 ? std::int64_t{number} : std::int64_t{1};
    }();
    return value;
}

bool readClockFile(TimeOfDay& time) {
    const char* path = std::getenv("TAVRIK_CLOCK");
    std::FILE* file = path != nullptr ? std::fopen(path, "re") : nullptr;
    if (file == nullptr) {
        return false;
    }
    long long seconds = 0;
    long long microseconds = 0;
    const bool whole = std::fscanf(file, "%18lld %18lld", &seconds, &microseconds) == 2;
    std::fclose(file);
    time = {seconds, microseconds};
    return whole;
}

}  // namespace

TimeOfDay timeOfDay() {
    TimeOfDay time;
    if (!readClockFile(time)) {
        timespec now{};
        clock_gettime(CLOCK_REALTIME, &now);
        time = {now.tv_sec, now.tv_nsec / 1000};
    }
    return time;
}

void sleepMicroseconds(std::int64_t microseconds) {
    const std::int64_t rest = microseconds / speed();
    const timespec wait{static_cast<time_t>(rest / 1'000'000),
                        static_cast<long>(rest % 1'000'000 * 1000)};
    nanosleep(&wait, nullptr);
}
