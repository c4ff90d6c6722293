#include "input/supervisor.h"

#include <cstdio>

#include "base/clock.h"
#include "base/singleton.h"
#include "input/discovery.h"
#include "input/input_thread.h"
#include "input/listener.h"

namespace {

constexpr std::int64_t kPollMicroseconds = 1'000'000;

}  // namespace

Supervisor::Supervisor()
    : events_(Singleton<inputevent_>::instance()), config_(Singleton<SoftwareConfig>::instance()) {
    clearActKeyEvent();
}

void Supervisor::clearActKeyEvent() { events_->actKeyEvent.fill('\0'); }

void Supervisor::poll(const DeviceListing& listing) {
    if (listing.handlers.empty()) {
        handleNoDevices();
        return;
    }
    if (firstPass_) {
        firstStart(listing);
    } else if (listing.handlers != previousHandlers_ || events_->listenerAlive == 0) {
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
        letGoOfHeldInput(*events_);
        reportInputThreadCancel();
        events_->closeInputFd(true, true, true);
    }
    idle_ = true;
}

void Supervisor::firstStart(const DeviceListing& listing) {
    recognisePanel(*events_, listing, false, touchByName_);
    previousHandlers_ = listing.handlers;
    classifyLines(*events_, listing, touchByName_);
    startInputThread();
    firstPass_ = false;
}

/// The old thread is stopped before anything else happens, so that it can neither read, write nor
/// close a descriptor that a later open receives. The lines keep their own order.
void Supervisor::restart(const DeviceListing& listing) {
    stopInputThread();
    letGoOfHeldInput(*events_);
    std::printf("------------hot event \n %s----------\n", listing.handlers.c_str());
    clearActKeyEvent();
    events_->hotPlugFlag = 1;
    events_->ledKeyFd.set(0);
    config_->SetConfigChar(kActKeyEventIndex, events_->actKeyEvent.data());
    config_->SaveConfig();
    events_->closeInputFd(true, true, true);
    recognisePanel(*events_, listing, true, touchByName_);
    reportInputThreadCancel();
    reportInputThreadCancel();
    previousHandlers_ = listing.handlers;
    classifyLines(*events_, listing, touchByName_);
    startInputThread();
}

void TimeCheckKeyEvent() {
    Supervisor supervisor;
    for (;;) {
        supervisor.poll(loadDeviceListing());
        sleepMicroseconds(kPollMicroseconds);
    }
}
