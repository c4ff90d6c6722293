#include "input/intake.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <thread>

#include "base/log_queue.h"
#include "input/cancel_window.h"

namespace {

constexpr std::int64_t kMicrosecondsPerSecond = 1'000'000;

bool inRange(std::int32_t fd) { return fd >= 0 && fd < FD_SETSIZE; }

/// Adds the open nodes of a list, with a line for each that is not; returns the highest descriptor
/// + 1.
int addToSet(fd_set& set, const InputDeviceList& list, int highest, bool keyboards) {
    for (std::size_t i = 0; i < list.count; ++i) {
        if (inRange(list.fds[i])) {
            FD_SET(list.fds[i], &set);
            highest = std::max(highest, list.fds[i] + 1);
        } else if (keyboards) {
            std::printf("error key fd-->%s\n", list.name(i));
        } else {
            std::printf("error mouse fd-->%s\n", list.name(i));
        }
    }
    return highest;
}

/// Calls `use(list, slot)` for every node that is open and whose queue takes more.
template <class Use>
void forEachOpen(Devices& devices, Use use) {
    for (InputDeviceList* list :
         {&devices.keyDevices, &devices.mouseDevices, &devices.touchDevices}) {
        for (std::size_t i = 0; i < list->count; ++i) {
            if (inRange(list->fds[i]) && list->queues[i].takesMore()) {
                use(*list, i);
            }
        }
    }
}

timeval untilThen(std::chrono::steady_clock::duration rest) {
    const std::int64_t us =
        std::max<std::int64_t>(std::chrono::ceil<std::chrono::microseconds>(rest).count(), 0);
    return {static_cast<time_t>(us / kMicrosecondsPerSecond),
            static_cast<suseconds_t>(us % kMicrosecondsPerSecond)};
}

}  // namespace

int Intake::buildReadSet() {
    FD_ZERO(&devices_.readSet);
    int highest = addToSet(devices_.readSet, devices_.keyDevices, 0, true);
    highest = addToSet(devices_.readSet, devices_.mouseDevices, highest, false);
    return addToSet(devices_.readSet, devices_.touchDevices, highest, false);
}

bool Intake::waitForRecords() {
    const int highest = buildReadSet();
    letLogLeave();
    fd_set ready = devices_.readSet;
    int found = 0;
    {
        const CancelWindow window;
        found = select(highest, &ready, nullptr, nullptr, nullptr);
    }
    if (found < 1) {
        std::printf("select error--->%d\n", found);
        return false;
    }
    fillReady(ready);
    return true;
}

void Intake::fillReady(const fd_set& ready) {
    forEachOpen(devices_, [&](InputDeviceList& list, std::size_t slot) {
        if (FD_ISSET(list.fds[slot], &ready)) {
            list.queues[slot].fill(list.node(slot), scratch_);
        }
    });
    looked_ = Clock::now();
}

/// Waits once, until `end` at most, for the nodes and for `fd` (-1: none), and takes what the nodes
/// have. False when nothing came in time, or the wait failed; `result` is as untilReadable's.
bool Intake::fillUntil(Clock::time_point end, int fd, int& result) {
    fd_set ready;
    FD_ZERO(&ready);
    int highest = 0;
    const auto add = [&](int one) {
        FD_SET(one, &ready);
        highest = std::max(highest, one + 1);
    };
    forEachOpen(devices_,
                [&](const InputDeviceList& list, std::size_t slot) { add(list.fds[slot]); });
    if (fd >= 0) {
        add(fd);
    }
    timeval wait = untilThen(end - Clock::now());
    const int found = select(highest, &ready, nullptr, nullptr, &wait);
    if (found < 0 && errno == EINTR) {
        return true;
    }
    result = found < 0 ? -1 : 0;
    if (found < 1) {
        looked_ = Clock::now();
        return false;
    }
    result = fd >= 0 && FD_ISSET(fd, &ready) ? 1 : 0;
    fillReady(ready);
    return true;
}

void Intake::refill() {
    int unused = 0;
    fillUntil(Clock::now(), -1, unused);
}

void Intake::rest(std::int64_t microseconds) {
    letLogLeave();
    const auto end = Clock::now() + std::chrono::microseconds(microseconds);
    int unused = 0;
    while (Clock::now() < end && fillUntil(end, -1, unused)) {
    }
    std::this_thread::sleep_until(end);  // at once, but after a wait that failed
}

int Intake::untilReadable(int fd, int milliseconds) {
    if (!inRange(fd)) {
        pollfd waiting{fd, POLLIN, 0};
        return poll(&waiting, 1, milliseconds);
    }
    letLogLeave();
    const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
    int result = 0;
    while (result == 0 && fillUntil(end, fd, result) && Clock::now() < end) {
    }
    return result;
}
