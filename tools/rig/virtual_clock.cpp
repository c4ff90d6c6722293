#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <optional>

#include "base/clock.h"

/// The clock of a virtual board. The program tavrik-virtual is the daemon with this in the place of
/// the system's clock, so that a script can put two taps 599 or 600 ms apart to the microsecond.
///
/// TAVRIK_CLOCK names a file that holds the time of day, how many times faster the daemon sleeps
/// and how many milliseconds it waits for a box's answer (0: as the daemon itself wants), as
/// "seconds microseconds speed patience". Without it the system's time counts.

namespace {

struct VirtualClock {
    TimeOfDay time;
    std::int64_t speed = 1;  ///< 1 to 1000
    int patience = 0;        ///< milliseconds, 0 to 60000; 0: the daemon's own
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
    int patience = 0;
    const int fields =
        std::fscanf(file, "%18lld %18lld %18lld %9d", &seconds, &microseconds, &speed, &patience);
    std::fclose(file);
    if (fields != 4 || speed < 1 || speed > 1000 || patience < 0 || patience > 60000) {
        return std::nullopt;
    }
    return VirtualClock{{seconds, microseconds}, speed, patience};
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

std::int64_t sleepLength(std::int64_t microseconds) {
    const auto clock = readClockFile();
    return microseconds / (clock ? clock->speed : 1);
}

int answerWait(int milliseconds) {
    const auto clock = readClockFile();
    return clock && clock->patience > 0 ? clock->patience : milliseconds;
}
