#pragma once

#include "net/udp_socket.h"

/// Of the control channel, whose port and group are wire::kCommandPort and wire::kControlGroup.
inline constexpr int kMulticastTtl = 64;
inline constexpr const char* kControlInterface = "eth0";

/// Sees to it that commands can arrive: what failed so far, the port that another program had or
/// the group of an interface that was not there or came anew, is tried again in silence, every 5 s
/// while no command comes, every minute once all is well. A line tells when that succeeded. Control
/// thread.
class ControlPort {
 public:
    ControlPort(UDPSocket& socket, bool joinsGroup) : socket_(socket), joinsGroup_(joinsGroup) {}

    /// Waits for a datagram; false when none has come yet.
    bool awaitCommand();

 private:
    UDPSocket& socket_;
    const bool joinsGroup_;
    bool isWell_ = false;
};
