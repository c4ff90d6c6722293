#include "control/control_port.h"

#include <cstdio>

bool awaitCommand(UDPSocket& socket, bool joinsGroup) {
    constexpr int kMilliseconds = 5'000;
    if (socket.waitForDatagram(kMilliseconds)) {
        return true;
    }
    if (socket.repairPort(kKvmSetPort)) {
        socket.SetMulticastTTL(kMulticastTtl);
        std::printf("control port %u is open now\n", kKvmSetPort);
    }
    if (joinsGroup && socket.repairMemberShip(kControlGroup, kControlInterface)) {
        std::printf("joined %s on %s\n", kControlGroup, kControlInterface);
    }
    return false;
}
