#pragma once

#include <cstddef>
#include <cstdio>

/// Keeps a log reader that stands still from stopping the console: printing waits at most a second
/// for it, once; what cannot be written after that is left out, and a line says how much when the
/// reader goes on.

struct LogSink {
    int fd = -1;              ///< -1: every line is left out
    std::size_t leftOut = 0;  ///< bytes since the reader stood still; 0 while it reads
};

/// Wraps the sink's descriptor in a line-buffered stream; closing it leaves the descriptor open.
/// The sink outlives the stream. Null when the memory for the stream is missing.
std::FILE* openLogStream(LogSink& sink);

/// Puts such streams in the place of standard output and standard error; one whose descriptor is
/// closed takes its lines nowhere. Called once by main before
/// any other thread exists.
void guardStandardStreams();
