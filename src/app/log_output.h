#pragma once

/// Printing never waits for the log's reader: standard output and standard error append to the
/// process's log queue (base/log_queue.h), and a thread of its own empties it.

/// Puts streams that append to the queue in the place of standard output and standard error; one
/// whose descriptor is closed takes its lines nowhere. What was printed before the process ends is
/// written, by exit, abort and crash. Called once by main before any other thread exists.
void guardStandardStreams();

/// Starts the thread that writes. Without it the lines leave at the end. Called once by main.
void startLogWriter();

/// Waits until everything printed so far is written, at most `milliseconds`. Any thread.
void finishLog(int milliseconds);
