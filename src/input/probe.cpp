#include "input/probe.h"

#include <linux/input-event-codes.h>
#include <sys/select.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <vector>

#include "input/cancel_window.h"

/// Telling real devices from nodes that accept no events: write a synthetic event, wait for its
/// echo.

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// How long a node is waited for, from the writing or its last record on.
constexpr milliseconds kEcho{80};
/// A device that keeps talking has answered; the probe need not wait until it pauses.
constexpr milliseconds kLongest{400};

using DeviceName = std::array<char, InputDeviceList::kNameSize>;

bool usable(std::int32_t fd) { return fd >= 0 && fd < FD_SETSIZE; }

/// The nodes of one kind while they are listened to.
struct Probe {
    const InputDeviceList& list;
    fd_set& readSet;
    Clock::time_point end{};  ///< of the whole probe
    std::array<bool, InputDeviceList::kSlots> answered{};
    std::array<bool, InputDeviceList::kSlots> left{};  ///< no longer listened to
    bool failed = false;                               ///< a read did, or the waiting itself
    std::array<Clock::time_point, InputDeviceList::kSlots> waitEnds{};
};

bool isHeard(const Probe& probe, std::size_t slot) {
    return usable(probe.list.fds[slot]) && !probe.left[slot];
}

/// Puts the nodes that are still listened to into the set; returns the highest descriptor + 1.
int watch(Probe& probe) {
    int highest = 0;
    FD_ZERO(&probe.readSet);
    for (std::size_t i = 0; i < probe.list.count; ++i) {
        if (isHeard(probe, i)) {
            FD_SET(probe.list.fds[i], &probe.readSet);
            highest = std::max(highest, probe.list.fds[i] + 1);
        }
    }
    return highest;
}

/// How long a select at `now` may take: until the first of the waits ends.
timeval longestWait(const Probe& probe, Clock::time_point now) {
    Clock::time_point first = probe.end;
    for (std::size_t i = 0; i < probe.list.count; ++i) {
        if (isHeard(probe, i)) {
            first = std::min(first, probe.waitEnds[i]);
        }
    }
    const auto wait = std::chrono::ceil<std::chrono::microseconds>(first - now);
    return {0, static_cast<suseconds_t>(std::max<std::int64_t>(wait.count(), 0))};
}

/// Reads one record of the slot's node. A failed read means that nothing more will come.
void readAnswer(Probe& probe, std::size_t slot) {
    InputRecord record;
    const NodeRead got = readRecords(probe.list.node(slot), {&record, 1});
    probe.answered[slot] = probe.answered[slot] || got.count == 1;
    probe.left[slot] = got.failure.has_value();
    probe.failed |= got.failure.has_value();
    probe.waitEnds[slot] = Clock::now() + kEcho;
}

/// After a select that began at `asked`: a node that was silent then is left when its wait was over
/// before the question, so a late look at the nodes loses no record that was in time.
void readReady(Probe& probe, Clock::time_point asked) {
    for (std::size_t i = 0; i < probe.list.count; ++i) {
        if (!isHeard(probe, i)) {
            continue;
        }
        const std::int32_t fd = probe.list.fds[i];
        if (FD_ISSET(fd, &probe.readSet) && hasInput(fd)) {
            readAnswer(probe, i);
        } else if (asked >= probe.waitEnds[i]) {
            probe.left[i] = true;
        }
    }
}

/// Listens to all nodes together, so that the probe takes as long for eight devices as for one. A
/// node is left 80 ms after its own last record, however busy the others are.
void collectEchoes(Probe& probe) {
    const Clock::time_point start = Clock::now();
    probe.end = start + kLongest;
    probe.waitEnds.fill(start + kEcho);
    for (int highest = watch(probe); highest > 0; highest = watch(probe)) {
        const Clock::time_point asked = Clock::now();
        timeval wait = longestWait(probe, asked);
        int ready = 0, error = 0;
        {
            const CancelWindow window;
            ready = select(highest, &probe.readSet, nullptr, nullptr, &wait);
            error = errno;
        }
        if (ready < 0 && error != EINTR) {
            probe.failed = true;
            return;
        }
        if (ready >= 0) {
            readReady(probe, asked);
        }
        if (asked >= probe.end) {  // looked at once at least, however late
            return;
        }
    }
}

void writeMotion(const EventNode& node) {
    writeRecord(node, EV_REL, REL_X, 1);
    writeRecord(node, EV_SYN, SYN_REPORT, 0);
}

void writeKey(const EventNode& node) {
    writeRecord(node, EV_KEY, KEY_APOSTROPHE, 1);
    writeRecord(node, EV_SYN, SYN_REPORT, 0);
    writeRecord(node, EV_KEY, KEY_APOSTROPHE, 0);
    writeRecord(node, EV_SYN, SYN_REPORT, 0);
}

/// Probes every node of a list with `writeEvents`; `printLine` gets the name of each. Returns the
/// names of those that answered.
template <class WriteEvents, class PrintLine>
std::vector<DeviceName> answering(Devices& devices, const InputDeviceList& list,
                                  WriteEvents writeEvents, PrintLine printLine) {
    for (std::size_t i = 0; i < list.count; ++i) {
        writeEvents(list.node(i));
    }
    Probe probe{.list = list, .readSet = devices.readSet};
    collectEchoes(probe);
    if (probe.failed) {
        devices.nodeFailed = 1;
    }
    std::vector<DeviceName> real;
    for (std::size_t i = 0; i < list.count; ++i) {
        if (probe.answered[i]) {
            real.push_back(list.names[i]);
        }
        printLine(list.name(i));
    }
    return real;
}

/// Writes the names back into slots 0 upward; `printed` gives the name that the line reports.
template <class PrintLine>
void keep(InputDeviceList& list, const std::vector<DeviceName>& real, PrintLine printLine) {
    for (std::size_t i = 0; i < real.size(); ++i) {
        list.names[i] = real[i];
        printLine(i);
    }
    list.count = static_cast<std::uint32_t>(real.size());
}

}  // namespace

int check_input_event(Devices& devices, Lights& lights) {
    InputDeviceList& mouseDevices = devices.mouseDevices;
    InputDeviceList& keyDevices = devices.keyDevices;
    const auto mice = answering(devices, mouseDevices, writeMotion, [](const char* name) {
        std::printf("check mouse %s false\n", name);
    });
    closeInputFd(devices, lights, true, false, false);
    keep(mouseDevices, mice, [&mouseDevices](std::size_t i) {
        std::printf("get real mouse event:%s\n", mouseDevices.name(i));
    });
    const auto keyboards = answering(devices, keyDevices, writeKey, [](const char* name) {
        std::printf("checkt mouse %s false\n", name);
    });
    closeInputFd(devices, lights, false, true, false);
    keep(keyDevices, keyboards, [&mouseDevices](std::size_t i) {
        // The line reports the mouse of the same slot, not the keyboard.
        std::printf("get real key event:%s\n", mouseDevices.name(i));
    });
    std::printf("get real mouse event %u, keyboard evnet %u\n", mouseDevices.count.load(),
                keyDevices.count.load());
    openInputFd(devices);
    return 1;
}
