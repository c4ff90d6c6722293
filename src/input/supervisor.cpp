#include "input/supervisor.h"

#include <cstdio>

#include "base/singleton.h"
#include "base/waiting.h"
#include "input/discovery.h"
#include "input/input_thread.h"
#include "remote/handover.h"

namespace {

constexpr std::int64_t kPollMicroseconds = 1'000'000;

}  // namespace

Supervisor::Supervisor(InputSlices& slices)
    : slices_(slices), devices_(slices.devices), config_(Singleton<SoftwareConfig>::instance()) {
    clearActKeyEvent();
}

void Supervisor::clearActKeyEvent() { devices_.actKeyEvent.fill('\0'); }

void Supervisor::poll(const DeviceListing& listing) {
    if (listing.handlers.empty()) {
        handleNoDevices();
        return;
    }
    if (firstPass_) {
        firstStart(listing);
    } else if (listing.handlers != previousHandlers_ || devices_.listenerAlive == 0) {
        restart(listing);
    }
    idle_ = false;
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
        closeInputFd(devices_, slices_.console.lights, true, true, true);
    }
    idle_ = true;
}

void Supervisor::firstStart(const DeviceListing& listing) {
    recognisePanel(devices_, listing, false, touchByName_);
    previousHandlers_ = listing.handlers;
    classifyLines(devices_, listing, touchByName_);
    startInputThread(slices_);
    firstPass_ = false;
}

/// The old thread is stopped before anything else happens, so that it can neither read, write nor
/// close a descriptor that a later open receives. The lines keep their own order.
void Supervisor::restart(const DeviceListing& listing) {
    stopInputThread();
    letGoOfEverything();
    std::printf("------------hot event \n %s----------\n", listing.handlers.c_str());
    clearActKeyEvent();
    slices_.console.duties.hotPlugFlag = 1;
    slices_.console.lights.ledKeyFd.set(-1);
    config_->SetConfigChar(kActKeyEventIndex, devices_.actKeyEvent.data());
    config_->SaveConfig();
    closeInputFd(devices_, slices_.console.lights, true, true, true);
    recognisePanel(devices_, listing, true, touchByName_);
    reportInputThreadCancel();
    reportInputThreadCancel();
    previousHandlers_ = listing.handlers;
    classifyLines(devices_, listing, touchByName_);
    startInputThread(slices_);
}

void TimeCheckKeyEvent(InputSlices& slices) {
    Supervisor supervisor(slices);
    for (;;) {
        supervisor.poll(loadDeviceListing());
        sleepMicroseconds(kPollMicroseconds);
    }
}
