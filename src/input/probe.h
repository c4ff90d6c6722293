#pragma once

#include "input/devices.h"

/// Telling real devices from nodes that accept no events.

/// Writes a synthetic event to every mouse and keyboard, keeps those that answer within 80 ms and
/// opens all lists again. Listens to a node until 80 ms after its last record, for 400 ms at most.
/// May be cancelled while it waits. Returns 1.
int check_input_event(Devices& devices, Lights& lights);
