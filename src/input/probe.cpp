#include "input/probe.h"

#include <linux/input-event-codes.h>
#include <sys/select.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <vector>

#include "input/cancel_window.h"

/// Telling real devices from nodes that accept no events: write a synthetic event, wait for its
/// echo.

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kEcho{80};
/// A device that keeps talking has answered; the probe need not wait until it pauses.
constexpr milliseconds kLongest{400};

using DeviceName = std::array<char, InputDeviceList::kNameSize>;

bool usable(std::int32_t fd) { return fd >= 0 && fd < FD_SETSIZE; }

/// The nodes of one kind while they are listened to.
struct Probe {
    const InputDeviceList& list;
    fd_set& readSet;
    std::array<bool, InputDeviceList::kSlots> answered{};
    std::array<bool, InputDeviceList::kSlots> drained{};  ///< a read failed, nothing more will come
};

/// Puts the nodes that are still listened to into the set; returns the highest descriptor + 1.
int watch(Probe& probe) {
    int highest = 0;
    FD_ZERO(&probe.readSet);
    for (std::size_t i = 0; i < probe.list.count; ++i) {
        const std::int32_t fd = probe.list.fds[i];
        if (usable(fd) && !probe.drained[i]) {
            FD_SET(fd, &probe.readSet);
            highest = std::max(highest, fd + 1);
        }
    }
    return highest;
}

void readReady(Probe& probe) {
    for (std::size_t i = 0; i < probe.list.count; ++i) {
        const std::int32_t fd = probe.list.fds[i];
        if (!usable(fd) || probe.drained[i] || !FD_ISSET(fd, &probe.readSet) || !hasInput(fd)) {
            continue;
        }
        InputRecord record;
        const bool whole = readRecord(probe.list.node(i), record) == kRecordSize;
        probe.answered[i] = probe.answered[i] || whole;
        probe.drained[i] = !whole;
    }
}

/// Listens to all nodes together until they have been silent for 80 ms, so that the probe takes as
/// long for eight devices as for one.
void collectEchoes(Probe& probe) {
    const Clock::time_point end = Clock::now() + kLongest;
    for (int highest = watch(probe); highest > 0 && Clock::now() < end; highest = watch(probe)) {
        timeval wait{0, std::chrono::microseconds(kEcho).count()};
        int ready = 0;
        {
            const CancelWindow window;
            ready = select(highest, &probe.readSet, nullptr, nullptr, &wait);
        }
        if (ready < 1) {
            return;
        }
        readReady(probe);
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
std::vector<DeviceName> answering(fd_set& readSet, const InputDeviceList& list,
                                  WriteEvents writeEvents, PrintLine printLine) {
    for (std::size_t i = 0; i < list.count; ++i) {
        writeEvents(list.node(i));
    }
    Probe probe{list, readSet, {}, {}};
    collectEchoes(probe);
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
    const auto mice = answering(devices.readSet, mouseDevices, writeMotion, [](const char* name) {
        std::printf("check mouse %s false\n", name);
    });
    closeInputFd(devices, lights, true, false, false);
    keep(mouseDevices, mice, [&mouseDevices](std::size_t i) {
        std::printf("get real mouse event:%s\n", mouseDevices.name(i));
    });
    const auto keyboards = answering(devices.readSet, keyDevices, writeKey, [](const char* name) {
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
