#pragma once

#include <memory>
#include <string>

#include "config/software_config.h"
#include "input/input_thread.h"
#include "input/listing.h"

/// Watches the device listing and keeps one input thread running over the listed devices.
/// Main thread only.
class Supervisor {
 public:
    explicit Supervisor(InputSlices& slices);

    /// One look at the listing and what follows from it. Does not sleep. `changed`: it is known to
    /// have changed, whatever its Handlers lines say. A device that was replaced under the same
    /// lines may be one that could not be opened, whose loss no listener has seen.
    void poll(const DeviceListing& listing, bool changed);

 private:
    void handleNoDevices();
    void firstStart(const DeviceListing& listing);
    void restart(const DeviceListing& listing);
    void closeDevices();
    bool retryIsDue();
    void clearActKeyEvent();

    InputSlices& slices_;
    Devices& devices_;
    std::shared_ptr<SoftwareConfig> config_;
    std::string previousHandlers_;
    int retryAfter_ = 1;        ///< passes from a failure to the next try; twice as many each time
    int passes_ = 0;            ///< since the last try
    bool firstPass_ = true;     ///< until the first non-empty listing is handled
    bool idle_ = true;          ///< no input thread is believed to run
    bool touchByName_ = false;  ///< a touch panel was recognised by name
};

/// The supervision loop: polls once a second for the life of the process. Never returns.
[[noreturn]] void TimeCheckKeyEvent(InputSlices& slices);
