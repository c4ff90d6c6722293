#pragma once

#include "app/inputevent.h"

/// The start-up sequence, in its one fixed order: board, display mode, user list, addresses,
/// settings, wall, hotkeys, sockets, threads. Nothing is retried except the multicast join; no
/// failure stops it, and the threads see to what failed. The threads work on the slices of
/// `events`, which outlives them. Main thread, once.
void startUp(inputevent_& events);

/// Opens KvmSetSocket on its port and joins its group on eth0, in at most ten attempts or, when it
/// is not to, in none. Main thread, before start-up's threads exist.
void openControlSocket(bool joinsGroup);

/// The version that start-up prints.
inline constexpr const char* kVersion = "T-0.0.0.6";
