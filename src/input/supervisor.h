#pragma once

#include <memory>
#include <string>

#include "base/inputevent.h"
#include "config/software_config.h"
#include "input/listing.h"

/// Watches the device listing and keeps one input thread running over the listed devices.
/// Main thread only.
class Supervisor {
 public:
    Supervisor();

    /// One look at the listing and what follows from it. Does not sleep.
    void poll(const DeviceListing& listing);

 private:
    void handleNoDevices();
    void firstStart(const DeviceListing& listing);
    void restart(const DeviceListing& listing);
    void clearActKeyEvent();

    std::shared_ptr<inputevent_> events_;
    std::shared_ptr<SoftwareConfig> config_;
    std::string previousHandlers_;
    bool firstPass_ = true;     ///< until the first non-empty listing is handled
    bool idle_ = true;          ///< no input thread is believed to run
    bool touchByName_ = false;  ///< a touch panel was recognised by name
};

/// The supervision loop: polls once a second for the life of the process. Never returns.
[[noreturn]] void TimeCheckKeyEvent();
