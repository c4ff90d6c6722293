#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <optional>

#include "base/clock.h"

/// The clock of a virtual board. The program tavrik-virtual is the daemon with this in the place of
/// the system's clock, so that a script can put two taps 599 or 600 ms apart to the microsecond.
///
/// TAVRIK_CLOCK names a file that holds the time of day and how many times faster the daemon
/// sleeps, as "seconds microseconds speed". Without it the system's time counts.

namespace {

struct VirtualClock {
    TimeOfDay time;
    std::int64_t speed = 1;  ///< 1 to 1000
};

std::optional<VirtualClock> readClockFile() {
    const char* path = std::getenv("TAVRIK_CLOCK");
    std::FILE* file = path != nullptr ? std::fopen(path, "re") : nullptr;
    if (file == nullptr) {
        return std::nullopt;
    }
    long long seconds = 0;
    long long microseconds = 0;
    long long speed = 0;
    const int fields = std::fscanf(file, "%18lld %18lld %18lld", &seconds, &microseconds, &speed);
    std::fclose(file);
    if (fields != 3 || speed < 1 || speed > 1000) {
        return std::nullopt;
    }
    return VirtualClock{{seconds, microseconds}, speed};
}

}  // namespace

TimeOfDay timeOfDay() {
    if (const auto clock = readClockFile()) {
        return clock->time;
    }
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return {now.tv_sec, now.tv_nsec / 1000};
}

void sleepMicroseconds(std::int64_t microseconds) {
    const auto clock = readClockFile();
    const std::int64_t rest = microseconds / (clock ? clock->speed : 1);
    const timespec wait{static_cast<time_t>(rest / 1'000'000),
                        static_cast<long>(rest % 1'000'000 * 1000)};
    nanosleep(&wait, nullptr);
}
