#include "base/clock.h"

#include <sys/time.h>

#include <cerrno>
#include <ctime>

TimeOfDay timeOfDay() {
    timeval now{};
    gettimeofday(&now, nullptr);
    return {now.tv_sec, now.tv_usec};
}

void sleepMicroseconds(std::int64_t microseconds) {
    timespec rest{};
    rest.tv_sec = static_cast<time_t>(microseconds / 1'000'000);
    rest.tv_nsec = static_cast<long>(microseconds % 1'000'000 * 1000);
    while (nanosleep(&rest, &rest) != 0 && errno == EINTR) {
    }
}

int answerWait(int milliseconds) { return milliseconds; }
