#include "remote/handover.h"

#include <chrono>
#include <thread>
#include <vector>

#include "remote/box_change.h"

bool handOver(NextBox next, LetGo when) {
    bool done = true;
    changeBoxInControl([&](BoxInControl& box, Told& told) {
        std::vector<Datagram> releases;
        if (box.ended) {
            return releases;
        }
        auto value = next(box);
        done = value.has_value();
        if (!done) {
            return releases;
        }
        if (when == LetGo::kAlways || !value->isSameBox(box)) {
            releases = told.takeReleases();
            value->serial = box.serial + 1;
            value->relativeNext = false;
        }
        box = *value;
        return releases;
    });
    return done;
}

void letGoOfEverything() {
    handOver([](const BoxInControl& old) { return std::optional(old); }, LetGo::kAlways);
}

void setInputPort(std::int32_t port) {
    handOver([port](BoxInControl box) {
        box.inputPort = port;
        return std::optional(box);
    });
}

void setOutIp(const AddressText& ip) {
    handOver([&ip](BoxInControl box) {
        box.curOutIp = ip;
        return std::optional(box);
    });
}

void forgetName() {
    handOver([](BoxInControl box) {
        box.curName = {};
        return std::optional(box);
    });
}

void stopControl() {
    handOver([](BoxInControl box) {
        box.curIp = box.curName = AddressText{AddressText::kNone};
        return std::optional(box);
    });
}

void endControl(std::int64_t microseconds) {
    using Clock = std::chrono::steady_clock;
    handOver(
        [](BoxInControl box) {
            box.curIp = AddressText{AddressText::kNone};
            box.ended = true;
            return std::optional(box);
        },
        LetGo::kAlways);
    const auto end = Clock::now() + std::chrono::microseconds(microseconds);
    while (!nobodyIsSending() && Clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}
