#include "control/control_port.h"

#include <cstdio>

#include "remote/wire_text.h"

bool ControlPort::awaitCommand() {
    using Repair = UDPSocket::Repair;
    constexpr int kFailedMs = 5'000;
    constexpr int kWellMs = 60'000;
    if (socket_.waitForDatagram(isWell_ ? kWellMs : kFailedMs)) {
        return true;
    }
    const Repair port = socket_.repairPort(wire::kCommandPort);
    if (port == Repair::kDone) {
        socket_.SetMulticastTTL(kMulticastTtl);
        std::printf("control port %d is open now\n", wire::kCommandPort);
    }
    const Repair group = joinsGroup_
                             ? socket_.repairMemberShip(wire::kControlGroup, kControlInterface)
                             : Repair::kNotNeeded;
    if (group == Repair::kDone) {
        std::printf("joined %s on %s\n", wire::kControlGroup, kControlInterface);
    }
    isWell_ = port != Repair::kFailed && group != Repair::kFailed;
    return false;
}
