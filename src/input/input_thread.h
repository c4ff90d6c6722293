#pragma once

/// The input thread's life: started and cancelled by the supervisor, again and again.

/// Starts the thread on `inputCtrl`, detached. At most one runs: call stopInputThread first. Prints
/// "thread create error" when none could be created. Supervisor thread.
void startInputThread();

/// Cancels the thread if it still runs and waits until it is done with every descriptor. Prints
/// nothing. Supervisor thread.
void stopInputThread();

/// Prints the outcome of a cancel: success when a thread had been started, whether or not it has
/// already ended; otherwise the error line. The thread itself is not touched.
void reportInputThreadCancel();

/// Thread entry: opens and probes the devices and runs the listener until it fails. Returns null.
void* inputCtrl(void* unused);
