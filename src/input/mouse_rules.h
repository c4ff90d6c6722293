#pragma once

#include <cstdint>

#include "base/event_node.h"
#include "input/rule_state.h"
#include "input/sink.h"

/// What a mouse does: to the input box, or to the OSD's pointer. Input thread.
class MouseRules {
 public:
    MouseRules(RuleState& state, Sink& sink) : state_(state), sink_(sink) {}

    /// One record while keys and pointer belong to the box.
    void serve(const InputRecord& record);

    /// Takes note of a button that comes up while the pointer is not the box's.
    void miss(const InputRecord& record);

    /// One record while the OSD, a mode or the touch pause keeps it from the box; it drives the
    /// pointer of an OSD that does not run here.
    void serveForOsd(const InputRecord& record);

 private:
    void move(Axis axis, std::int32_t by);
    void turnWheel(std::int32_t by);
    void button(const InputRecord& record);
    void tell(std::int32_t wheel);

    void moveOsd(const InputRecord& record);
    void pressOsd(const InputRecord& record);
    void tellOsd(std::uint8_t wheel);

    RuleState& state_;
    Sink& sink_;
    wire::Absolute buffer_{};      ///< buttons and wheel as the box was told
    std::uint8_t osdButtons_ = 0;  ///< of the pointer that drives the OSD
};
