// The bare loop that the console is measured against: wait, one record a read, one datagram a key
// or a packet of motion. No rules, no log. plain_loop ADDRESS PORT KEYBOARD NODE...
#include <arpa/inet.h>
#include <fcntl.h>
#include <linux/input-event-codes.h>
#include <sys/select.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "base/event_node.h"
#include "remote/wire.h"

int main(int argc, char** argv) {
    if (argc < 4) {
        return 2;
    }
    const int out = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in to{
        AF_INET, htons(static_cast<std::uint16_t>(std::atoi(argv[2]))), {inet_addr(argv[1])}, {}};
    const auto send = [&](const auto& report) {
        sendto(out, report.data(), report.size(), 0, reinterpret_cast<sockaddr*>(&to), sizeof to);
    };
    int nodes[FD_SETSIZE];
    int x = 0;
    int y = 0;
    for (int i = 3; i < argc; ++i) {
        nodes[i] = open(argv[i], O_RDWR);
    }
    for (;;) {
        fd_set ready;
        FD_ZERO(&ready);
        for (int i = 3; i < argc; ++i) {
            FD_SET(nodes[i], &ready);
        }
        select(nodes[argc - 1] + 1, &ready, nullptr, nullptr, nullptr);
        for (int i = 3; i < argc; ++i) {
            InputRecord record;
            if (!FD_ISSET(nodes[i], &ready) || read(nodes[i], &record, sizeof record) != 16) {
                continue;
            }
            if (i == 3 && record.type == EV_KEY) {
                send(wire::keyboard(0, record.value != 0 ? 0x04 : 0));
            } else if (i > 3 && record.type == EV_REL) {
                (record.code == REL_X ? x : y) += record.value;
            } else if (i > 3) {
                send(wire::absolute(record.type == EV_KEY && record.value != 0 ? 1 : 0, x, y, 0));
            }
        }
    }
}
