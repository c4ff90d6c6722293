#pragma once

/// The end of the process by SIGTERM, SIGINT or SIGHUP: what is down at the box in control is let
/// go of first, whatever the other threads wait for.

/// Blocks the three signals for the calling thread and those that it starts, and starts the thread
/// that waits for them. Of the three, one that the caller's parent had ignored stays ignored.
/// Called once by main before any other thread exists.
void letGoAtTheEnd();
