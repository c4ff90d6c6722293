#pragma once

/// Options of a socket's descriptor. A call that fails is reported on standard error with
/// `problem`. Any thread.

/// The value, or -1.
int getSocketOption(int fd, int level, int name, const char* problem);

/// Return 1 or 0.
int setSocketOption(int fd, int level, int name, int value, const char* problem);
int setReceiveTimeOut(int fd, long microseconds);
