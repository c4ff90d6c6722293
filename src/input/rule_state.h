#pragma once

#include "base/guarded.h"
#include "control/hotkey_table.h"
#include "input/key_report.h"
#include "remote/box_in_control.h"
#include "remote/console_state.h"

/// The state that the rules read and change, handed down to them. Input thread.
struct RuleState {
    ConsoleState& console;
    Guarded<currentCtl>& place;  ///< the current screen and cell, and the pointer
    const Guarded<HotkeyTable>& hotkeys;
    bool osdIsHere = true;   ///< an OSD process runs on this console
    bool ctrlTaps = true;    ///< three taps of Ctrl open the OSD
    bool altTaps = false;    ///< three taps of Alt the preview
    bool shiftTaps = false;  ///< three taps of Shift the KVM mode

    BoxInControl box;  ///< as of the record that is served
    KeyReport keys;    ///< the keys that are down

    /// Nothing stays down at a box: each release is sent, and a mode that opens lets go.
    bool releaseEverything = false;

    Modes& modes() const { return console.modes; }
};
