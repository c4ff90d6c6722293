#pragma once

#include "net/udp_socket.h"

/// The control channel's port and group.
inline constexpr unsigned kKvmSetPort = 41236;
inline constexpr int kMulticastTtl = 64;
inline constexpr const char* kControlGroup = "224.168.1.1";
inline constexpr const char* kControlInterface = "eth0";

/// Waits for a datagram on the socket, at most 5 s, and tries in silence what has failed so far:
/// the port that another program had, the group of an interface that was not there or came anew. A
/// line tells when that succeeded. False when none came. Control thread.
bool awaitCommand(UDPSocket& socket, bool joinsGroup);
