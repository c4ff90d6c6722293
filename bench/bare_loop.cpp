// The bare loop that the console is measured against: wait, one read of each ready node, one
// datagram a key or a packet of motion. No rules, no log. A read takes RECORDS_A_READ records at
// most: 1 is the plain loop, 64 the batch loop. ADDRESS PORT KEYBOARD NODE...
#include <arpa/inet.h>
#include <fcntl.h>
#include <linux/input-event-codes.h>
#include <sys/select.h>
#include <unistd.h>

#include <array>
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
            std::array<InputRecord, RECORDS_A_READ> records;
            const ssize_t got =
                FD_ISSET(nodes[i], &ready) ? read(nodes[i], records.data(), sizeof records) : 0;
            for (ssize_t n = 0; n < got / 16; ++n) {
                const InputRecord& record = records[static_cast<std::size_t>(n)];
                if (i == 3 && record.type == EV_KEY) {
                    send(wire::keyboard(0, record.value != 0 ? 0x04 : 0));
                } else if (i > 3 && record.type == EV_REL) {
                    (record.code == REL_X ? x : y) += record.value;
                } else if (i > 3) {
                    send(wire::absolute(record.type == EV_KEY && record.value != 0, x, y, 0));
                }
            }
        }
    }
}
