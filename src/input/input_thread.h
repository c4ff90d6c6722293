#pragma once

#include "input/devices.h"
#include "remote/console_state.h"

/// The input thread's life: started and cancelled by the supervisor, again and again.

/// What the input thread works on; it outlives the thread.
struct InputSlices {
    Devices& devices;
    ConsoleState& console;
};

/// Starts the thread on `inputCtrl`, detached. At most one runs: call stopInputThread first. Prints
/// "thread create error" when none could be created. Supervisor thread.
void startInputThread(InputSlices& slices);

/// Cancels the thread if it still runs and waits until it is done with every descriptor. Prints
/// nothing. Supervisor thread.
void stopInputThread();

/// Prints the outcome of a cancel: success when the last start succeeded, whether or not the thread
/// has already ended; otherwise the error line. The thread itself is not touched.
void reportInputThreadCancel();

/// Thread entry, on InputSlices: opens and probes the devices and runs the listener until it fails.
/// Returns null.
void* inputCtrl(void* slices);
