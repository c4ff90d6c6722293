#include "control/control_port.h"

#include <cstdio>

bool ControlPort::awaitCommand() {
    using Repair = UDPSocket::Repair;
    constexpr int kFailedMs = 5'000;
    constexpr int kWellMs = 60'000;
    if (socket_.waitForDatagram(isWell_ ? kWellMs : kFailedMs)) {
        return true;
    }
    const Repair port = socket_.repairPort(kKvmSetPort);
    if (port == Repair::kDone) {
        socket_.SetMulticastTTL(kMulticastTtl);
        std::printf("control port %u is open now\n", kKvmSetPort);
    }
    const Repair group = joinsGroup_ ? socket_.repairMemberShip(kControlGroup, kControlInterface)
                                     : Repair::kNotNeeded;
    if (group == Repair::kDone) {
        std::printf("joined %s on %s\n", kControlGroup, kControlInterface);
    }
    isWell_ = port != Repair::kFailed && group != Repair::kFailed;
    return false;
}
