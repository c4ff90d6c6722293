#include "input/supervisor.h"

#include <cstdio>
#include <utility>

#include "base/service_manager.h"
#include "base/singleton.h"
#include "base/waiting.h"
#include "base/work_bound.h"
#include "input/discovery.h"
#include "input/input_thread.h"
#include "remote/box_in_control.h"
#include "remote/handover.h"

namespace {

constexpr std::int64_t kPollMicroseconds = 1'000'000;
constexpr std::int64_t kPollSlackMicroseconds = 50'000;

}  // namespace

Supervisor::Supervisor(InputSlices& slices)
    : slices_(slices), devices_(slices.devices), config_(Singleton<SoftwareConfig>::instance()) {
    clearActKeyEvent();
}

void Supervisor::clearActKeyEvent() { devices_.actKeyEvent.fill('\0'); }

void Supervisor::poll(const DeviceListing& listing, bool changed) {
    if (listing.handlers.empty()) {
        handleNoDevices();
        return;
    }
    const bool isNew = changed || listing.handlers != previousHandlers_;
    if (isNew) {
        retryAfter_ = 1;
    }
    if (firstPass_) {
        firstStart(listing);
    } else if (isNew || devices_.listenerAlive == 0 || retryIsDue()) {
        restart(listing);
    }
    idle_ = false;
}

/// A node that is there and failed is tried again after 1, 2, 4, 8 and 16 passes, and then not
/// before the listing changes: a try costs the other devices a restart.
bool Supervisor::retryIsDue() {
    constexpr int kLongest = 16;
    if (devices_.nodeFailed == 0 || retryAfter_ > kLongest || ++passes_ < retryAfter_) {
        return false;
    }
    retryAfter_ *= 2;
    return true;
}

void Supervisor::handleNoDevices() {
    previousHandlers_.clear();
    if (firstPass_) {
        return;
    }
    if (!idle_) {
        stopInputThread();
        letGoOfEverything();
        reportInputThreadCancel();
        closeDevices();
    }
    idle_ = true;
}

/// What nobody has served of them goes with them, as it would in the kernel.
void Supervisor::closeDevices() {
    closeInputFd(devices_, slices_.console.lights, true, true, true);
    if (const std::size_t dropped = std::exchange(devices_.droppedRecords, 0); dropped > 0) {
        std::printf("%zu unserved events dropped with their devices\n", dropped);
    }
}

void Supervisor::firstStart(const DeviceListing& listing) {
    recognisePanel(devices_, listing, false, touchByName_);
    previousHandlers_ = listing.handlers;
    classifyLines(devices_, listing, touchByName_);
    startInputThread(slices_);
    firstPass_ = false;
}

/// The old listener goes on while the settings are saved. It is stopped before its devices are
/// closed, so that it can neither read, write nor close a descriptor that a later open receives,
/// and before the new one's duty is set, which it would take for its own.
void Supervisor::restart(const DeviceListing& listing) {
    std::printf("------------hot event \n %s----------\n", listing.handlers.c_str());
    passes_ = 0;
    clearActKeyEvent();
    config_->SetConfigChar(kActKeyEventIndex, devices_.actKeyEvent.data());
    config_->SaveConfig();
    stopInputThread();
    devices_.nodeFailed = 0;
    letGoOfEverything();
    slices_.console.duties.hotPlugFlag = 1;
    slices_.console.lights.ledKeyFd.set(-1);
    closeDevices();
    recognisePanel(devices_, listing, true, touchByName_);
    reportInputThreadCancel();
    reportInputThreadCancel();
    previousHandlers_ = listing.handlers;
    classifyLines(devices_, listing, touchByName_);
    startInputThread(slices_);
}

void TimeCheckKeyEvent(InputSlices& slices) {
    Supervisor supervisor(slices);
    CurrentListing listing;
    tellServiceManager("READY=1");
    for (;;) {
        const DeviceListing& now = listing.look(slices.devices.listenerAlive == 0);
        supervisor.poll(now, listing.kernelToldAChange());
        sendWhatIsOwed();
        if (allWorkComesBack()) {
            tellServiceManager("WATCHDOG=1");
        }
        sleepRoughly(kPollMicroseconds, kPollSlackMicroseconds);
    }
}
