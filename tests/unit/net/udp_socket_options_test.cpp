// Memberships, binding to an interface, options, and the texts of failures.

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <array>
#include <functional>
#include <string>

#include "unit/net/open_socket.h"

namespace {

TEST(UDPSocket, MembershipIsJoinedOnceAndLeftOnce) {
    Open a;
    EXPECT_EQ(a.socket.AddMemberShip("224.168.1.1", "lo"), 1);
    std::string printed =
        printedBy([&] { EXPECT_EQ(a.socket.AddMemberShip("224.168.1.1", "lo"), 0); });
    EXPECT_EQ(printed.substr(0, 32), "setsockopt():IP_ADD_MEMBERSHIP: ");
    EXPECT_EQ(a.socket.DropMemberShip(), 1);
    printed = printedBy([&] { EXPECT_EQ(a.socket.DropMemberShip(), 0); });
    EXPECT_EQ(printed.substr(0, 33), "setsockopt():IP_DROP_MEMBERSHIP: ");
}

TEST(UDPSocket, MembershipOnAnUnknownInterfaceFailsInSilence) {
    Open a;
    const std::string printed =
        printedBy([&] { EXPECT_EQ(a.socket.AddMemberShip("224.168.1.1", "nosuch0"), 0); });
    EXPECT_EQ(printed, "");
    EXPECT_EQ(a.socket.AddMemberShip("no group", "lo"), 0);
    EXPECT_EQ(a.socket.AddMemberShip(nullptr, "lo"), 0);
}

TEST(UDPSocket, MulticastComesBackToTheBoardItself) {
    Open a, b;
    ASSERT_EQ(a.socket.AddMemberShip("224.168.1.1", "lo"), 1);
    const in_addr lo{inet_addr(kLoopback)};
    ASSERT_EQ(setsockopt(b.fd, IPPROTO_IP, IP_MULTICAST_IF, &lo, sizeof lo), 0);
    EXPECT_EQ(b.socket.SendTo("224.168.1.1", a.port, "all", 3), 3);
    EXPECT_EQ(a.receive(), "all");
}

TEST(UDPSocket, BindsToTheAddressOfAnInterface) {
    // A descriptor that is open but not bound: one whose bind failed because the port was taken.
    Open a;
    UDPSocket second;
    ASSERT_EQ(second.CreateUDPServer(a.port, 0, true, false), -1);
    EXPECT_EQ(second.BindLocalAddr("lo", 0, true), 1);
    EXPECT_EQ(second.SendTo(kLoopback, a.port, "x", 1), 1);
    EXPECT_EQ(a.receive(), "x");
    EXPECT_EQ(second.BindLocalAddr("lo", 0, true), 0) << "bound twice";
}

TEST(UDPSocket, OptionsReadBackWhatWasSet) {
    UDPSocket socket;
    ASSERT_GE(socket.CreateUDPServer(0, 0, false, false), 0);
    EXPECT_EQ(socket.SetIpTTL(7), 1);
    EXPECT_EQ(socket.SetMulticastTTL(64), 1);
    EXPECT_EQ(socket.GetIpTTL(), 7);
    EXPECT_EQ(socket.GetMulticastTTL(), 64);
    EXPECT_EQ(socket.SetRevBuf(8192), 1);
    EXPECT_EQ(socket.SetSndBuf(16384), 1);
    EXPECT_EQ(socket.GetRevBuf(), 2 * 8192);  // the kernel doubles it for its own use
    EXPECT_EQ(socket.GetSndBuf(), 2 * 16384);
    EXPECT_EQ(socket.SetMulticastTTL(256), 0);
}

TEST(UDPSocket, ClosedSocketReportsEachFailureWithItsText) {
    Open opened;
    opened.socket.CloseUDPSocket();
    EXPECT_FALSE(fdIsOpen(opened.fd));
    UDPSocket& none = opened.socket;
    std::array<char, 8> buffer{};
    const struct {
        std::string text;
        std::function<long()> action;
        long expected;
    } rows[] = {
        {"select rcvfrom timeout", [&] { return none.RecvFrom(buffer.data(), 8); }, -1},
        {"setsockopt():SO_BROADCAST", [&] { return none.AddBroadCast(nullptr); }, 0},
        {"setsockopt():SO_REUSEADDR", [&] { return none.BindLocalAddr("lo", 0, true); }, 0},
        {"bind error", [&] { return none.BindLocalAddr("lo", 0, false); }, 0},
        {"setsockopt():IP_MULTICAST_LOOP", [&] { return none.AddMemberShip("224.168.1.1", "lo"); },
         0},
        {"setsockopt error\n", [&] { return none.setTimeOut(); }, 0},
        {"getsockopt():SO_RCVBUF", [&] { return none.GetRevBuf(); }, -1},
        {"getsockopt():SO_SNDBUF", [&] { return none.GetSndBuf(); }, -1},
        {"setsockopt():SO_RCVBUF", [&] { return none.SetRevBuf(1); }, 0},
        {"setsockopt():SO_SNDBUF", [&] { return none.SetSndBuf(1); }, 0},
        {"setsockopt():IP_TTL", [&] { return none.GetIpTTL(); }, -1},
        {"setsockopt():IP_TTL", [&] { return none.GetMulticastTTL(); }, -1},
        {"setsockopt():IP_TTL", [&] { return none.SetIpTTL(1); }, 0},
        {"setsockopt():IP_MULTICAST_TTL", [&] { return none.SetMulticastTTL(1); }, 0},
    };
    for (const auto& row : rows) {
        long result = -2;
        EXPECT_EQ(printedBy([&] { result = row.action(); }), row.text + ": Bad file descriptor\n");
        EXPECT_EQ(result, row.expected) << row.text;
    }
    EXPECT_EQ(none.readEmptySocket(), 1);
    EXPECT_EQ(none.setnonblocking(), 0);
    EXPECT_EQ(none.SendTo(kLoopback, opened.port, "x", 1), -1);
}

}  // namespace
