#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "base/clock.h"
#include "base/event_node.h"
#include "input/rule_state.h"
#include "input/sink.h"
#include "input/tap_rules.h"

/// One record of a keyboard, with what the rules need to know of it.
struct KeyEvent {
    InputRecord record;
    std::size_t slot = 0;   ///< of the keyboard
    const char* name = "";  ///< of its node
    std::int32_t fd = -1;   ///< of its node
    TimeOfDay now;          ///< when it was read
};

/// What the keys mean: the console's own rules first, then the box. Input thread.
class KeyRules {
 public:
    KeyRules(RuleState& state, Sink& sink) : state_(state), sink_(sink), taps_(state, sink) {}

    /// Carries out one record. A key combination returns the slot at which the pass over the
    /// keyboards goes on.
    std::optional<std::size_t> serve(const KeyEvent& event);

    /// The keys that this listener saw pressed and not yet released.
    const HeldKeys& held() const { return held_; }

 private:
    void takeLed(const KeyEvent& event);
    std::optional<std::size_t> press(const KeyEvent& event);
    void release(const KeyEvent& event);

    bool takeKey(const KeyEvent& event);
    void noteLockKey();
    bool isEscape() const { return state_.keys.name().starts_with("ESC"); }
    void forwardSingleKey();

    void toOsd();
    void toOutputOsd();
    void leaveOsd();

    std::size_t groupKey();
    void giveToOsd();
    void moveByArrow();
    void forwardGroupKey();

    void tellRelease();
    void syncLockKey(std::uint16_t code);

    RuleState& state_;
    Sink& sink_;
    TapRules taps_;
    HeldKeys held_;
    std::array<char, 64> groupText_{};  ///< hotkey text of the last key combination
    bool firstKey_ = true;              ///< the next key event re-reads the lights first
    bool lockKeyPressed_ = false;
    bool hotkeySent_ = false;
};
