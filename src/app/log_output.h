#pragma once

#include <cstdio>

/// Keeps a log reader that stands still from stopping the console: printing waits at most a second
/// for it, once; what cannot be written after that is left out, and a line says how much when the
/// reader goes on.

/// Wraps descriptor `fd` in a line-buffered stream. Null when the memory for it is missing.
std::FILE* openLogStream(int fd);

/// Puts such streams in the place of standard output and standard error. Called once by main before
/// any other thread exists.
void guardStandardStreams();
