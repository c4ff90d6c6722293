#pragma once

#include <array>
#include <chrono>

#include "base/waiting.h"
#include "input/devices.h"

/// The listener's waits. Whatever it waits for, records or the end of a pause or a box's answer,
/// the nodes are emptied into their queues meanwhile. Input thread.
class Intake : public Waiting {
 public:
    explicit Intake(Devices& devices) : devices_(devices) {}

    /// Puts every open node into the devices' read set, with a line for each that is not open;
    /// returns the highest descriptor + 1.
    int buildReadSet();

    /// Builds the set and waits without limit until a node gives something; may be cancelled
    /// meanwhile. False, with its line, when the wait failed.
    bool waitForRecords();

    /// Takes what the nodes have without waiting.
    void refill();

    /// How long ago the nodes were last looked at.
    std::chrono::steady_clock::duration sinceLastLook() const { return Clock::now() - looked_; }

    void rest(std::int64_t microseconds) override;
    int untilReadable(int fd, int milliseconds) override;

 private:
    using Clock = std::chrono::steady_clock;

    bool fillUntil(Clock::time_point end, int fd, int& result);
    void fillReady(const fd_set& ready);

    Devices& devices_;
    Clock::time_point looked_ = Clock::now();
    std::array<InputRecord, 256> scratch_;
};
