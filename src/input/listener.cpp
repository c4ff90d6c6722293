#include "input/listener.h"

#include <cstdio>

#include "base/log_queue.h"
#include "base/work_bound.h"
#include "input/cancel_window.h"
#include "input/console_sink.h"
#include "input/intake.h"
#include "input/serving.h"
#include "remote/handover.h"
#include "remote/lights.h"
#include "remote/reports.h"
#include "remote/selection.h"

namespace {

/// Passes without a wait go on for so long before the nodes are looked at again.
constexpr std::chrono::milliseconds kBetweenLooks{1};

/// A pass may pause for each key of eight keyboards and bring a box up to date.
constexpr std::chrono::seconds kPassBound{10};

/// With no keyboard known, the lights are those of the first one that is open.
void adoptLedKeyboard(const InputDeviceList& keyboards, Lights& lights) {
    for (std::size_t i = 0; i < keyboards.count; ++i) {
        const std::int32_t fd = keyboards.fds[i];
        if (fd >= 0) {
            lights.ledKeyFd.with([fd](std::int32_t& known) { known = known < 0 ? fd : known; });
            return;
        }
    }
}

void printSelection() {
    const currentCtl now = currentInfo.copy();
    std::printf("get(0x%x,0x%x) output(%u,%u) location:%u,%u-->%s   input locationt:%u,%u--->%s\n",
                gridKey(now.outX, now.outY), gridKey(now.cellX, now.cellY), now.screen.columns,
                now.screen.rows, now.outX, now.outY, now.screen.name.c_str(), now.cellX, now.cellY,
                boxInControl().curIp.c_str());
}

/// The panel stands for the one box of a screen that is not split.
void setTouchInput(Guarded<AddressText>& touchInputIp) {
    const bool split = currentInfo.with([](const currentCtl& current) {
        return current.screen.columns >= 2 || current.screen.rows > 1;
    });
    touchInputIp.set(split ? AddressText{AddressText::kNone} : boxInControl().curIp);
}

/// One run: what it remembers is made anew at every start.
class Listener {
 public:
    Listener(Devices& devices, ConsoleState& console)
        : devices_(devices),
          state_{.console = console,
                 .place = currentInfo,
                 .hotkeys = hotkeyinfo_,
                 .osdIsHere = qtFlag != 0,
                 .ctrlTaps = ctrl_3_flag != 0,
                 .altTaps = alt_3_flag != 0,
                 .shiftTaps = shift_3_flag != 0,
                 .box = boxInControl(),
                 .keys = {},
                 .releaseEverything = releaseEverything != 0} {}

    void begin();
    bool waitAndServe();

 private:
    Devices& devices_;
    RuleState state_;
    ConsoleSink sink_{state_};
    Intake intake_{devices_};
    const WaitingPlace place_{intake_};
    const DeferredLog log_;
    WorkBound bound_{kPassBound};
    Serving serving_{devices_, state_, sink_};
};

void Listener::begin() {
    std::puts("======>start listenInput<======");
    devices_.listenerAlive = 1;
    intake_.buildReadSet();
    adoptLedKeyboard(devices_.keyDevices, state_.console.lights);
    GetCurInip(kCellInUse, nullptr);
    printSelection();
    if (state_.releaseEverything && !boxInControl().isNone() &&
        state_.console.duties.startIsOver.exchange(1) == 0) {
        releaseAll(state_.console.motion);  // what an earlier run had to leave behind
    }
    setTouchInput(state_.console.touchInputIp);
    if (devices_.touchDevices.count > 0 &&
        (devices_.panel.touchMaxX <= 0 || devices_.panel.touchMaxY <= 0)) {
        std::puts("touch panel of unknown range, its positions are ignored");
    }
    if (resyncIsDue(state_.console, boxInControl())) {
        std::puts("out set sync");
        resync(state_.console);
        state_.keys.clear();
    }
}

/// Waits only when everything is served. While it is not, the nodes are looked at from time to
/// time: a keyboard need not wait until a mouse is silent.
bool Listener::waitAndServe() {
    if (!serving_.hasWork()) {
        if (!intake_.waitForRecords()) {
            return false;
        }
    } else {
        allowCancel();
        if (intake_.sinceLastLook() > kBetweenLooks) {
            intake_.refill();
        }
    }
    bound_.begin();
    const bool goesOn = serving_.pass();
    sink_.printLines();
    bound_.end();
    return goesOn;
}

}  // namespace

unsigned listenInputFd(Devices& devices, ConsoleState& console) {
    Listener listener(devices, console);
    listener.begin();
    while (listener.waitAndServe()) {
    }
    letGoOfEverything();
    devices.listenerAlive = 0;
    return 0;
}
