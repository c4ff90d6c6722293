#include <linux/input-event-codes.h>
#include <sys/select.h>

#include <array>
#include <cstdio>
#include <vector>

#include "app/base/inputevent.h"
#include "input/cancel_window.h"

/// Telling real devices from nodes that accept no events: write a synthetic event, wait for its
/// echo.

namespace {

constexpr suseconds_t kEchoMicroseconds = 80'000;
/// A device that keeps talking has answered; the drain need not wait until it pauses.
constexpr int kMostDrained = 256;

using DeviceName = std::array<char, InputDeviceList::kNameSize>;

bool usable(std::int32_t fd) { return fd > 0 && fd < FD_SETSIZE; }

/// Reads until the node has been silent for 80 ms or a read fails. True when a record came.
bool drain(fd_set& readSet, const EventNode& node) {
    if (!usable(node.fd)) {
        return false;
    }
    bool answered = false;
    for (int drained = 0; drained < kMostDrained; ++drained) {
        FD_ZERO(&readSet);
        FD_SET(node.fd, &readSet);
        timeval wait{0, kEchoMicroseconds};
        int ready = 0;
        {
            const CancelWindow window;
            ready = select(node.fd + 1, &readSet, nullptr, nullptr, &wait);
        }
        InputRecord record;
        if (ready < 1 || readRecord(node, record) != kRecordSize) {
            break;
        }
        answered = true;
    }
    return answered;
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

std::vector<DeviceName> answeringMice(inputevent_& events) {
    std::vector<DeviceName> real;
    InputDeviceList& mice = events.mouseDevices;
    for (std::size_t i = 0; i < mice.count; ++i) {
        writeMotion(mice.node(i));
        if (drain(events.readSet, mice.node(i))) {
            real.push_back(mice.names[i]);
        }
        std::printf("check mouse %s false\n", mice.name(i));
    }
    return real;
}

std::vector<DeviceName> answeringKeyboards(inputevent_& events) {
    std::vector<DeviceName> real;
    InputDeviceList& keyboards = events.keyDevices;
    for (std::size_t i = 0; i < keyboards.count; ++i) {
        writeKey(keyboards.node(i));
        if (drain(events.readSet, keyboards.node(i))) {
            real.push_back(keyboards.names[i]);
        }
        std::printf("checkt mouse %s false\n", keyboards.name(i));
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

int inputevent_::check_input_event() {
    const std::vector<DeviceName> mice = answeringMice(*this);
    closeInputFd(true, false, false);
    keep(mouseDevices, mice,
         [this](std::size_t i) { std::printf("get real mouse event:%s\n", mouseDevices.name(i)); });
    const std::vector<DeviceName> keyboards = answeringKeyboards(*this);
    closeInputFd(false, true, false);
    keep(keyDevices, keyboards, [this](std::size_t i) {
        // The line reports the mouse of the same slot, not the keyboard.
        std::printf("get real key event:%s\n", mouseDevices.name(i));
    });
    std::printf("get real mouse event %u, keyboard evnet %u\n", mouseDevices.count.load(),
                keyDevices.count.load());
    openInputFd();
    return 1;
}
