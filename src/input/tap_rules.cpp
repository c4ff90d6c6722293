#include "input/tap_rules.h"

#include "input/key_forward.h"
#include "remote/send.h"

bool TapRules::takeTap(const TimeOfDay& now) {
    const std::string_view name = state_.keys.name();
    if (state_.ctrlTaps && name.starts_with("LEFTCTRL")) {
        tapCtrl(now);
    } else if (state_.altTaps && name.starts_with("LEFTALT")) {
        tapAlt(now);
    } else if (state_.shiftTaps && name.starts_with("LEFTSHIFT")) {
        tapShift(now);
    } else {
        return false;
    }
    return true;
}

void TapRules::reset() {
    ctrl_.reset();
    alt_.reset();
    shift_.reset();
    escape_.reset();
}

unsigned TapRules::press(TapCounter& counter, const TimeOfDay& now) {
    const Tap tap = counter.press(timing_, now);
    if (tap.gap) {
        sink_.line("diff: %03ds. %03ldms. %03ldus\n", tap.gap->seconds,
                   static_cast<long>(tap.gap->milliseconds),
                   static_cast<long>(tap.gap->microseconds));
    }
    return tap.count;
}

void TapRules::forward() {
    forwardPress(state_, sink_);
    sink_.pause(kAfterKeyMicroseconds);
}

void TapRules::toOutputOsd(std::string_view command) {
    sink_.toOsd(OsdPort::kOutputCommands, bytesOf(command));
    sink_.line("send %s,%s\n", state_.box.curOutIp.c_str(), command.data());
}

/// To the OSD wherever it runs.
void TapRules::toOsd(std::string_view command) {
    if (state_.osdIsHere) {
        sink_.toOsd(OsdPort::kHereCommands, bytesOf(command));
    } else {
        toOutputOsd(command);
    }
}

/// What is down comes up where the box does not see it.
void TapRules::modeOpened() {
    if (state_.releaseEverything) {
        sink_.command({Order::kLetGo});
    }
}

void TapRules::tapCtrl(const TimeOfDay& now) {
    const unsigned count = press(ctrl_, now);
    sink_.line("osdNUm-->%u\n", count);
    if (count != 3) {
        forward();
        return;
    }
    state_.modes().osdFlag = 1;
    toOsd(osdS);
    sink_.line("------INOSD------\n");
    modeOpened();
    ctrl_.reset();
    alt_.reset();
}

void TapRules::tapAlt(const TimeOfDay& now) {
    const unsigned count = press(alt_, now);
    sink_.line("alt number-->%u\n", count);
    if (count != 3) {
        forward();
        return;
    }
    ctrl_.reset();
    if (state_.osdIsHere) {  // the preview is its own affair, and the counter stays at 3
        toOsd(previewS);
        return;
    }
    state_.modes().previewMode = 1;
    toOsd(previewS);
    sink_.line("preview start\n");
    modeOpened();
    alt_.reset();
}

void TapRules::tapCtrlAtBox() {
    if (state_.box.isNone()) {
        return;
    }
    sink_.toBox(BoxReport::keys(wire::kCtrlHeld));
    for (int release = 0; release < 2; ++release) {
        sink_.pause(kAfterKeyMicroseconds);
        sink_.toBox(BoxReport::keys(wire::kKeyRelease));
    }
}

void TapRules::tapShift(const TimeOfDay& now) {
    const unsigned count = press(shift_, now);
    sink_.line("shift number-->%u\n", count);
    if (count == 2) {
        return;  // swallowed, unlike the second Ctrl or Alt
    }
    if (count != 3) {
        forward();
        return;
    }
    state_.modes().kvmMode = 1;
    toOutputOsd(kvmS);
    tapCtrlAtBox();
    modeOpened();
}

void TapRules::countEscape(const TimeOfDay& now) {
    const unsigned count = press(escape_, now);
    sink_.line("ESC PRESS NUMBER:%u\n", count);
    if (count != 3) {
        return;
    }
    Modes& modes = state_.modes();
    modes.previewMode = 0;
    modes.kvmMode = 0;
    modes.osdFlag = 0;
    sink_.toOsd(OsdPort::kOutputCommands, bytesOf(osdQ));
    sink_.line("3 esc force out of osd\n");
    escape_.reset();
}
