// Memberships, binding to an interface, options, and the texts of failures.

#include <functional>

#include "unit/net/open_socket.h"

namespace {

TEST(UDPSocket, MembershipIsJoinedOnceAndLeftOnce) {
    Open a, b;
    ASSERT_EQ(a.socket.AddMemberShip("224.168.1.1", "lo"), 1);
    const in_addr lo{inet_addr(kLoopback)};
    ASSERT_EQ(setsockopt(b.fd, IPPROTO_IP, IP_MULTICAST_IF, &lo, sizeof lo), 0);
    EXPECT_EQ(b.socket.SendTo("224.168.1.1", a.port, "all", 3), 3);
    EXPECT_EQ(a.receive(), "all") << "it comes back to the board itself";
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(a.socket.AddMemberShip("224.168.1.1", "lo"), 0); }),
              "setsockopt():IP_ADD_MEMBERSHIP: Address already in use\n");
    EXPECT_EQ(a.socket.DropMemberShip(), 1);
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(a.socket.DropMemberShip(), 0); }),
              "setsockopt():IP_DROP_MEMBERSHIP: Cannot assign requested address\n");
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(a.socket.AddMemberShip("224.168.1.1", "nosuch0"), 0); }),
              "");
    EXPECT_EQ(a.socket.AddMemberShip(nullptr, "lo"), 0);
}

TEST(UDPSocket, OptionsReadBackWhatWasSet) {
    Open a;
    EXPECT_EQ(a.socket.SetIpTTL(7) + a.socket.SetMulticastTTL(64), 2);
    EXPECT_EQ(std::pair(a.socket.GetIpTTL(), a.socket.GetMulticastTTL()), std::pair(7, 64));
    EXPECT_EQ(a.socket.SetRevBuf(8192) + a.socket.SetSndBuf(16384), 2);
    // The kernel doubles it for its own use.
    EXPECT_EQ(std::pair(a.socket.GetRevBuf(), a.socket.GetSndBuf()), std::pair(16384, 32768));
}

TEST(UDPSocket, ClosedSocketReportsEachFailureWithItsText) {
    Open opened;
    opened.socket.CloseUDPSocket();
    EXPECT_FALSE(fdIsOpen(opened.fd));
    UDPSocket& none = opened.socket;
    char buffer[8];
    const std::tuple<std::string, std::function<long()>, long> rows[] = {
        {"select rcvfrom timeout", [&] { return none.RecvFrom(buffer, 8); }, -1},
        {"setsockopt():SO_BROADCAST", [&] { return none.AddBroadCast(nullptr); }, 0},
        {"setsockopt():SO_REUSEADDR", [&] { return none.BindLocalAddr("lo", 0, true); }, 0},
        {"bind error", [&] { return none.BindLocalAddr("lo", 0, false); }, 0},
        {"setsockopt():IP_MULTICAST_LOOP", [&] { return none.AddMemberShip("224.1.1.1", "lo"); },
         0},
        {"setsockopt error\n", [&] { return none.setTimeOut(); }, 0},
        {"setsockopt():IP_TTL", [&] { return none.GetIpTTL(); }, -1},
        {"setsockopt():IP_TTL", [&] { return none.GetMulticastTTL(); }, -1},
        {"setsockopt():IP_MULTICAST_TTL", [&] { return none.SetMulticastTTL(1); }, 0},
    };
    for (const auto& [text, action, expected] : rows) {
        long result = -2;
        EXPECT_EQ(printedBy([&] { result = action(); }), text + ": Bad file descriptor\n");
        EXPECT_EQ(result, expected) << text;
    }
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(none.SendTo("x", 1), -1); }),
              "please intput client_ip and client_port\n");
    EXPECT_EQ(none.readEmptySocket(), 1);
    EXPECT_EQ(none.setnonblocking(), 0);
    EXPECT_EQ(none.SendTo(kLoopback, opened.port, "x", 1), -1);
}

}  // namespace
