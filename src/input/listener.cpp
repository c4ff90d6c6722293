#include "input/listener.h"

#include <algorithm>
#include <cstdio>
#include <optional>

#include "input/cancel_window.h"
#include "input/console_sink.h"
#include "input/key_rules.h"
#include "input/mouse_rules.h"
#include "input/touch_rules.h"
#include "remote/handover.h"
#include "remote/lights.h"
#include "remote/selection.h"

namespace {

bool inRange(std::int32_t fd) { return fd >= 0 && fd < FD_SETSIZE; }

/// Adds the open nodes of a list; returns the highest descriptor + 1.
int addToSet(fd_set& set, const InputDeviceList& list, int highest, bool keyboards) {
    for (std::size_t i = 0; i < list.count; ++i) {
        if (inRange(list.fds[i])) {
            FD_SET(list.fds[i], &set);
            highest = std::max(highest, list.fds[i] + 1);
        } else if (keyboards) {
            std::printf("error key fd-->%s\n", list.name(i));
        } else {
            std::printf("error mouse fd-->%s\n", list.name(i));
        }
    }
    return highest;
}

int buildReadSet(Devices& devices) {
    FD_ZERO(&devices.readSet);
    int highest = addToSet(devices.readSet, devices.keyDevices, 0, true);
    highest = addToSet(devices.readSet, devices.mouseDevices, highest, false);
    return addToSet(devices.readSet, devices.touchDevices, highest, false);
}

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
        : devices_(devices), state_{console,           currentInfo,      hotkeyinfo_,
                                    qtFlag != 0,       ctrl_3_flag != 0, alt_3_flag != 0,
                                    shift_3_flag != 0, boxInControl(),   {}} {
        FD_ZERO(&ready_);
    }

    void begin();
    bool waitAndServe();

 private:
    bool isReady(std::int32_t fd) const;
    bool serveEach(const InputDeviceList& list, bool (Listener::*serve)(std::size_t));
    bool serveMouse(std::size_t slot);
    bool serveKeyboards();
    std::optional<std::size_t> serveKeyboard(std::size_t slot);
    bool servePanel(std::size_t slot);

    Devices& devices_;
    RuleState state_;
    ConsoleSink sink_{state_};
    KeyRules keys_{state_, sink_};
    MouseRules mouse_{state_, sink_};
    TouchRules touch_{state_, sink_, devices_.panel};
    fd_set ready_;  ///< the descriptors that the last wait found readable
};

void Listener::begin() {
    std::puts("======>start listenInput<======");
    devices_.listenerAlive = 1;
    buildReadSet(devices_);
    adoptLedKeyboard(devices_.keyDevices, state_.console.lights);
    selectInputOfCell();
    printSelection();
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

bool Listener::waitAndServe() {
    const int highest = buildReadSet(devices_);
    ready_ = devices_.readSet;
    int found = 0;
    {
        const CancelWindow window;
        found = select(highest, &ready_, nullptr, nullptr, nullptr);
    }
    if (found < 1) {
        std::printf("select error--->%d\n", found);
        return false;
    }
    return serveEach(devices_.mouseDevices, &Listener::serveMouse) && serveKeyboards() &&
           serveEach(devices_.touchDevices, &Listener::servePanel);
}

/// True when the last wait found `fd` readable and it still is, so that a read cannot wait even if
/// two entries share a node; false for a node that is not open.
bool Listener::isReady(std::int32_t fd) const {
    return inRange(fd) && FD_ISSET(fd, &ready_) && hasInput(fd);
}

/// One pass over the ready devices of a list. False when one could not be served.
bool Listener::serveEach(const InputDeviceList& list, bool (Listener::*serve)(std::size_t)) {
    for (std::size_t i = 0; i < list.count; ++i) {
        if (isReady(list.fds[i]) && !(this->*serve)(i)) {
            return false;
        }
    }
    return true;
}

/// False when the read failed and the listener has to end.
bool Listener::serveMouse(std::size_t slot) {
    state_.box = boxInControl();
    const bool forBox = state_.modes().areOff() && !state_.modes().touchPaused;
    if (forBox && resyncIsDue(state_.console, state_.box)) {
        sink_.line("osd change signal need locks sync\n");
        sink_.command({Order::kResync});
        state_.keys.clear();
    }
    InputRecord record;
    const int length = readRecord(devices_.mouseDevices.node(slot), record);
    if (length != kRecordSize) {
        if (!forBox && length > 0) {
            return true;
        }
        std::printf("read mouse input error--->%zu len %d\n", slot, length);
        return false;
    }
    if (forBox) {
        mouse_.serve(record);
    } else {
        mouse_.serveForOsd(record);
    }
    return true;
}

/// A key combination sends the pass to a slot that its hotkey look-up decides, perhaps back to one
/// already served; such a keyboard is read again only if it still has something to give.
bool Listener::serveKeyboards() {
    const InputDeviceList& keyboards = devices_.keyDevices;
    std::size_t slot = 0;
    while (slot < keyboards.count) {
        if (!isReady(keyboards.fds[slot])) {
            ++slot;
            continue;
        }
        const auto next = serveKeyboard(slot);
        if (!next) {
            return false;
        }
        slot = *next;
    }
    return true;
}

/// Nothing when the read failed, otherwise the slot at which the pass goes on.
std::optional<std::size_t> Listener::serveKeyboard(std::size_t slot) {
    const InputDeviceList& keyboards = devices_.keyDevices;
    KeyEvent event{{}, slot, keyboards.name(slot), keyboards.fds[slot], {}};
    const int length = readRecord(keyboards.node(slot), event.record);
    if (length != kRecordSize) {
        std::printf("read key error or in osd pause %zu len %d\n", slot, length);
        return std::nullopt;
    }
    event.now = timeOfDay();
    state_.box = boxInControl();
    return keys_.serve(event).value_or(slot + 1);
}

/// False when the read failed, or counts as failed because touch is paused.
bool Listener::servePanel(std::size_t slot) {
    InputRecord record;
    const int length = readRecord(devices_.touchDevices.node(slot), record);
    if (!state_.modes().areOff() && length > 0) {
        return true;
    }
    if (length != kRecordSize || state_.modes().touchPaused) {
        std::puts("read touch error");
        return false;
    }
    state_.box = boxInControl();
    touch_.serve(record);
    return true;
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
