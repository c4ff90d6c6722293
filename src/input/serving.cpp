#include "input/serving.h"

#include <linux/input-event-codes.h>

#include "remote/lights.h"

namespace {

std::array<bool, InputDeviceList::kSlots> readySlots(const InputDeviceList& list) {
    std::array<bool, InputDeviceList::kSlots> ready{};
    for (std::size_t i = 0; i < list.count; ++i) {
        ready[i] = !list.queues[i].isEmpty();
    }
    return ready;
}

bool anyIn(const InputDeviceList& list) {
    for (std::size_t i = 0; i < list.count; ++i) {
        if (!list.queues[i].isEmpty()) {
            return true;
        }
    }
    return false;
}

/// Keeps account of what is down at a device.
void note(HeldKeys& held, std::size_t slot, const InputRecord& record) {
    if (record.type == EV_KEY && record.value == 1) {
        held.press(slot, record.code);
    } else if (record.type == EV_KEY && record.value == 0) {
        held.release(slot, record.code);
    }
}

}  // namespace

Serving::Serving(Devices& devices, RuleState& state, Sink& sink)
    : devices_(devices),
      state_(state),
      sink_(sink),
      keys_(state, sink),
      mouse_(state, sink),
      touch_(state, sink, devices.panel) {}

bool Serving::hasWork() const {
    return anyIn(devices_.mouseDevices) || anyIn(devices_.keyDevices) ||
           anyIn(devices_.touchDevices);
}

bool Serving::pass() {
    const Slots mice = readySlots(devices_.mouseDevices);
    const Slots keyboards = readySlots(devices_.keyDevices);
    const Slots panels = readySlots(devices_.touchDevices);
    for (std::size_t i = 0; i < devices_.mouseDevices.count; ++i) {
        if (mice[i] && !serveMouse(i)) {
            return false;
        }
    }
    if (!serveKeyboards(keyboards)) {
        return false;
    }
    for (std::size_t i = 0; i < devices_.touchDevices.count; ++i) {
        if (panels[i] && !servePanel(i)) {
            return false;
        }
    }
    return true;
}

/// Lets go of what the device no longer holds down, as if the lost records had come. Without a true
/// state that is everything.
template <class Give>
void Serving::letGoOfLost(const InputDeviceList& list, std::size_t slot, const HeldKeys& held,
                          Give give) {
    const NodeQueue& queue = list.queues[slot];
    const auto& down = queue.downNow();
    int count = 0;
    for (const std::uint16_t code : held.of(slot)) {
        if (!down || code >= down->size() || !down->test(code)) {
            const InputRecord& marker = queue.entry().record;
            give(InputRecord{marker.seconds, marker.microseconds, EV_KEY, code, 0});
            ++count;
        }
    }
    sink_.line("%s lost events, %d of its keys let go\n", list.name(slot), count);
}

/// Mice and panels open no mode: one that is on now was opened by a command meanwhile, and what the
/// record pressed will not come up at the box.
void Serving::letGoIfAModeCame() {
    if (!state_.modes().areOff() || (state_.releaseEverything && state_.modes().touchPaused)) {
        sink_.command({Order::kLetGo});
    }
}

void Serving::giveToMouse(std::size_t slot, const InputRecord& record) {
    note(buttons_, slot, record);
    if (isForBox()) {
        mouse_.serve(record);
        letGoIfAModeCame();
        return;
    }
    if (state_.releaseEverything) {
        mouse_.miss(record);
    }
    mouse_.serveForOsd(record);
}

/// False when the read failed and the listener has to end.
bool Serving::serveMouse(std::size_t slot) {
    state_.box = boxInControl();
    if (resyncIsDue(state_.console, state_.box)) {
        sink_.line("osd change signal need locks sync\n");
        sink_.command({Order::kResync});
        state_.keys.clear();
    }
    NodeQueue& queue = devices_.mouseDevices.queues[slot];
    const NodeQueue::Next next = queue.next();
    if (next == NodeQueue::Next::kRecord) {
        giveToMouse(slot, queue.entry().record);
    } else if (next == NodeQueue::Next::kLoss) {
        letGoOfLost(devices_.mouseDevices, slot, buttons_,
                    [&](const InputRecord& record) { giveToMouse(slot, record); });
    } else if (next == NodeQueue::Next::kFailure && (isForBox() || queue.failureLength() <= 0)) {
        sink_.line("read mouse input error--->%zu len %d\n", slot, queue.failureLength());
        return false;
    }
    return true;
}

/// A key combination sends the pass to a slot that its hotkey look-up decides, perhaps back to one
/// already served; such a keyboard is served again only if it still has something to give.
bool Serving::serveKeyboards(const Slots& ready) {
    const InputDeviceList& keyboards = devices_.keyDevices;
    std::size_t slot = 0;
    while (slot < keyboards.count) {
        if (!ready[slot] || keyboards.queues[slot].isEmpty()) {
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

/// Returns the slot at which the pass goes on.
std::size_t Serving::giveToKeys(std::size_t slot, const InputRecord& record,
                                const TimeOfDay& read) {
    const InputDeviceList& keyboards = devices_.keyDevices;
    state_.box = boxInControl();
    return keys_.serve({record, slot, keyboards.name(slot), keyboards.fds[slot], read})
        .value_or(slot + 1);
}

/// Nothing when the read failed, otherwise the slot at which the pass goes on.
std::optional<std::size_t> Serving::serveKeyboard(std::size_t slot) {
    NodeQueue& queue = devices_.keyDevices.queues[slot];
    const NodeQueue::Next next = queue.next();
    if (next == NodeQueue::Next::kFailure) {
        sink_.line("read key error or in osd pause %zu len %d\n", slot, queue.failureLength());
        return std::nullopt;
    }
    if (next == NodeQueue::Next::kLoss) {
        letGoOfLost(devices_.keyDevices, slot, keys_.held(), [&](const InputRecord& record) {
            giveToKeys(slot, record, queue.entry().read);
        });
        return slot + 1;
    }
    return giveToKeys(slot, queue.entry().record, queue.entry().read);
}

void Serving::giveToPanel(std::size_t slot, const InputRecord& record) {
    note(contacts_, slot, record);
    if (state_.modes().areOff()) {
        state_.box = boxInControl();
        touch_.serve(record);
        letGoIfAModeCame();
    } else if (state_.releaseEverything) {
        touch_.miss(record);
    }
}

/// False when the read failed, or counts as failed because touch is paused.
bool Serving::servePanel(std::size_t slot) {
    NodeQueue& queue = devices_.touchDevices.queues[slot];
    const NodeQueue::Next next = queue.next();
    const bool failed = next == NodeQueue::Next::kFailure;
    const bool dropped = !state_.modes().areOff() && (!failed || queue.failureLength() > 0);
    if (!dropped && (failed || state_.modes().touchPaused)) {
        sink_.line("read touch error\n");
        return false;
    }
    if (next == NodeQueue::Next::kRecord) {
        giveToPanel(slot, queue.entry().record);
    } else if (next == NodeQueue::Next::kLoss) {
        letGoOfLost(devices_.touchDevices, slot, contacts_,
                    [&](const InputRecord& record) { giveToPanel(slot, record); });
    }
    return true;
}
