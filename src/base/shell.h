#pragma once

/// Runs `command` with /bin/sh and waits for its end; its result is nobody's. Under a path prefix
/// only a program that stands in the prefixed /bin is run, never this machine's own. A shell that
/// cannot be started is reported on standard error. The command starts with no signal blocked. Main
/// thread.
void runShell(const char* command);
