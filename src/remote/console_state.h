#pragma once

#include <cstdint>
#include <utility>

#include "base/address_text.h"
#include "base/guarded.h"
#include "base/shared.h"
#include "base/state.h"

/// The state of the console that the rules and the commands share, in slices; whoever needs one
/// gets it by argument. Any thread may read and write any member.

/// What the keyboard and the pointer are for at the moment.
struct Modes {
    Flag osdFlag{0};                 ///< the OSD is open
    Flag previewMode{0};             ///< the preview is
    Flag kvmMode{0};                 ///< the KVM mode is
    Flag touchPaused{0};             ///< the pointer devices rest
    Flag touchLongPressDisabled{0};  ///< a long press is no right click; nothing sets it

    /// True while keys and pointer belong to the input box.
    bool areOff() const { return !osdFlag && !previewMode && !kvmMode; }
};

/// The lock lights of the keyboard that was used last.
struct Lights {
    /// Its descriptor; -1: none known. The guard is held while the lights are read, so that the
    /// descriptor cannot be closed and reused meanwhile.
    Guarded<std::int32_t> ledKeyFd{-1};
    Flag capsLockOn{0};
    Flag numLockOn{0};
};

/// Pointer motion in the units of the mouse that no report has carried yet.
struct Motion {
    Shared<std::int32_t> remoteDx{0};  ///< for a box that takes relative reports
    Shared<std::int32_t> localDx{0};   ///< for the OSD
    Shared<std::int32_t> remoteDy{0};
    Shared<std::int32_t> localDy{0};

    /// Takes what a relative report carries.
    std::pair<std::int32_t, std::int32_t> takeRemote() {
        return {remoteDx.exchange(0), remoteDy.exchange(0)};
    }
};

/// What is due to the box in control.
struct Duties {
    Flag hotPlugFlag{1};      ///< its lights and its picture size, with the next event
    Flag startIsOver{0};      ///< the first box has been let go of
    Flag queryInProgress{0};  ///< 0 while a query of a selected box runs
};

struct ConsoleState {
    Modes modes;
    Lights lights;
    Motion motion;
    Duties duties;
    Guarded<AddressText> touchInputIp;  ///< the box that the touch panel stands for
};
