#pragma once

#include <array>
#include <optional>

#include "input/devices.h"
#include "input/key_rules.h"
#include "input/mouse_rules.h"
#include "input/touch_rules.h"

/// Serving what waits in the queues of the devices: one record a device a pass, mice first, then
/// keyboards, then touch panels. Knows no wait and no socket. Input thread.
class Serving {
 public:
    Serving(Devices& devices, RuleState& state, Sink& sink);

    /// True while something waits in a queue.
    bool hasWork() const;

    /// One pass over the devices that have something at its start. False, with its line, when one
    /// has failed and the listener has to end.
    bool pass();

 private:
    using Slots = std::array<bool, InputDeviceList::kSlots>;

    /// True when pointer records go to the box.
    bool isForBox() const { return state_.modes().areOff() && !state_.modes().touchPaused; }
    void letGoIfAModeCame();
    bool serveMouse(std::size_t slot);
    void giveToMouse(std::size_t slot, const InputRecord& record);
    bool serveKeyboards(const Slots& ready);
    std::optional<std::size_t> serveKeyboard(std::size_t slot);
    std::size_t giveToKeys(std::size_t slot, const InputRecord& record, const TimeOfDay& read);
    bool servePanel(std::size_t slot);
    void giveToPanel(std::size_t slot, const InputRecord& record);

    template <class Give>
    void letGoOfLost(const InputDeviceList& list, std::size_t slot, const HeldKeys& held,
                     Give give);

    Devices& devices_;
    RuleState& state_;
    Sink& sink_;
    KeyRules keys_;
    MouseRules mouse_;
    TouchRules touch_;
    HeldKeys buttons_;   ///< of the mice
    HeldKeys contacts_;  ///< of the panels
};
