#include "base/waiting.h"

#include <poll.h>
#include <sys/prctl.h>

#include <cerrno>
#include <ctime>

#include "base/clock.h"

namespace {

class PlainWaiting : public Waiting {
 public:
    void rest(std::int64_t microseconds) override {
        timespec rest{};
        rest.tv_sec = static_cast<time_t>(microseconds / 1'000'000);
        rest.tv_nsec = static_cast<long>(microseconds % 1'000'000 * 1000);
        while (nanosleep(&rest, &rest) != 0 && errno == EINTR) {
        }
    }

    int untilReadable(int fd, int milliseconds) override {
        pollfd waiting{fd, POLLIN, 0};
        const int ready = poll(&waiting, 1, milliseconds);
        if (ready > 0 && (waiting.revents & POLLNVAL) != 0) {
            errno = EBADF;
            return -1;
        }
        return ready;
    }
};

constinit PlainWaiting plain;
constinit thread_local Waiting* place = &plain;

}  // namespace

WaitingPlace::WaitingPlace(Waiting& waiting) : before_(place) { place = &waiting; }

WaitingPlace::~WaitingPlace() { place = before_; }

void sleepMicroseconds(std::int64_t microseconds) { place->rest(sleepLength(microseconds)); }

void sleepRoughly(std::int64_t microseconds, std::int64_t slack) {
    prctl(PR_SET_TIMERSLACK, static_cast<unsigned long>(slack) * 1000);
    sleepMicroseconds(microseconds);
    prctl(PR_SET_TIMERSLACK, 0UL);  // as the thread had it at first
}

int waitUntilReadable(int fd, int milliseconds) {
    if (fd < 0) {
        errno = EBADF;
        return -1;
    }
    return place->untilReadable(fd, milliseconds);
}
