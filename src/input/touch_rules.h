#pragma once

#include <cstdint>

#include "base/event_node.h"
#include "input/devices.h"
#include "input/gestures.h"
#include "input/rule_state.h"
#include "input/sink.h"

/// What the touch panel does: position, contact, right button, and the gestures long press (right
/// click) and double tap (double click). Input thread.
class TouchRules {
 public:
    TouchRules(RuleState& state, Sink& sink, const TouchPanel& panel)
        : state_(state), sink_(sink), panel_(panel) {}

    /// One record while keys and pointer belong to the box.
    void serve(const InputRecord& record);

    /// Takes note of a contact that ends while the panel is not the box's.
    void miss(const InputRecord& record);

 private:
    void takePosition(const InputRecord& record);
    void moveTo(Axis axis, std::int32_t value);
    void takeKey(const InputRecord& record);
    void touchDown(std::int64_t now);
    void watchLongPress(std::int64_t now);
    void pressRightButton();
    void prepare(std::int32_t wheel);
    void flush();
    void flush(std::uint8_t buttons);

    RuleState& state_;
    Sink& sink_;
    const TouchPanel& panel_;
    wire::Absolute buffer_{};
    LongPress longPress_;
    DoubleTap doubleTap_;
};
