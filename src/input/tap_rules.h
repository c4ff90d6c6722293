#pragma once

#include <string_view>

#include "input/rule_state.h"
#include "input/sink.h"
#include "input/taps.h"

/// The taps that open and close the OSD, the preview and the KVM mode. A mode is set or cleared
/// before the words that go with it. Input thread.
class TapRules {
 public:
    TapRules(RuleState& state, Sink& sink) : state_(state), sink_(sink) {}

    /// Carries out the press of a single key when it is one that is counted; false when it is not.
    bool takeTap(const TimeOfDay& now);

    /// Where no OSD runs on this console: the third quick Escape leaves every mode.
    void countEscape(const TimeOfDay& now);

    /// Any other key ends every series of taps.
    void reset();

 private:
    unsigned press(TapCounter& counter, const TimeOfDay& now);
    void tapCtrl(const TimeOfDay& now);
    void tapAlt(const TimeOfDay& now);
    void tapShift(const TimeOfDay& now);
    void tapCtrlAtBox();
    void forward();
    void modeOpened();
    void toOutputOsd(std::string_view command);
    void toOsd(std::string_view command);

    RuleState& state_;
    Sink& sink_;
    TapTiming timing_;
    TapCounter ctrl_, alt_, shift_, escape_;
};
