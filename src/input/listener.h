#pragma once

#include "input/devices.h"
#include "remote/console_state.h"

/// Selects the box of the current cell, then waits for the devices and serves every record that
/// they give, until a wait or a read fails; what is down at the box is then let go of. Returns 0.
/// May be cancelled while it waits. Input thread.
unsigned listenInputFd(Devices& devices, ConsoleState& console);
