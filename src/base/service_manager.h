#pragma once

/// Tells the service manager that started this process `state`, such as "READY=1" or "WATCHDOG=1",
/// through the socket that NOTIFY_SOCKET names; without one, nothing. Never waits. Any thread.
void tellServiceManager(const char* state);
