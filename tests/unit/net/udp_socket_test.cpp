#include "net/udp_socket.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <string>
#include <thread>

#include "unit/net/open_socket.h"

namespace {

TEST(UDPSocket, DatagramArrivesWithItsSender) {
    Open a, b;
    EXPECT_EQ(a.socket.GetClientSockaddr().sin_family, 0);
    EXPECT_EQ(b.send(a, "hello"), 5);
    EXPECT_EQ(a.receive(), "hello");
    EXPECT_EQ(portOf(a.socket.GetClientSockaddr()), b.port);
    EXPECT_EQ(a.socket.GetClientSockaddr().sin_addr.s_addr, inet_addr(kLoopback));
}

TEST(UDPSocket, ReceiveTellsTheSenderAndLeavesThePeer) {
    Open a, b, c;
    b.send(a, "first");
    a.receive();
    c.send(a, "second");
    std::array<char, 3> text{};
    sockaddr_in sender{};
    EXPECT_EQ(a.socket.Receive(text.data(), 3, sender), 3);
    EXPECT_EQ(std::string(text.data(), 3), "sec");
    EXPECT_EQ(portOf(sender), c.port);
    EXPECT_EQ(portOf(a.socket.GetClientSockaddr()), b.port);
    EXPECT_EQ(a.receive(), "") << "the rest of a cut datagram came back";
    EXPECT_EQ(a.socket.Receive(text.data(), -1, sender), -1);
}

TEST(UDPSocket, EmptyNonBlockingSocketGivesZeroAfterTwentyMilliseconds) {
    Open a;
    std::array<char, 8> text{};
    long got = -2;
    const auto start = std::chrono::steady_clock::now();
    const std::string printed = printedBy([&] { got = a.socket.RecvFrom(text.data(), 8); });
    const auto spent = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(got, 0);
    EXPECT_EQ(printed, "");
    EXPECT_GE(spent, std::chrono::milliseconds(19));
    EXPECT_EQ(a.socket.GetClientSockaddr().sin_addr.s_addr, 0U);
}

TEST(UDPSocket, BlockingSocketWaitsForTheTimeOutOfTheKernel) {
    Open a(false);
    EXPECT_EQ(fcntl(a.fd, F_GETFL) & O_NONBLOCK, 0);
    EXPECT_EQ(a.receive(), "failed");
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_EQ(a.socket.setTimeOut(), 0);
    timeval limit{};
    socklen_t size = sizeof limit;
    ASSERT_EQ(getsockopt(a.fd, SOL_SOCKET, SO_RCVTIMEO, &limit, &size), 0);
    EXPECT_GE(limit.tv_usec, 15000);  // the kernel rounds up to its own tick
    EXPECT_LT(limit.tv_usec, 35000);
}

TEST(UDPSocket, ThreadsThatShareOneSocketLoseNoDatagramAndPrintNothing) {
    Open a, b;
    constexpr int kCount = 100;
    Shared<int> received{0};
    const auto take = [&] {
        std::array<char, 8> text{};
        sockaddr_in sender{};
        for (long got = 1; got != 0;) {
            got = a.socket.Receive(text.data(), 8, sender);
            received.add(got > 0 ? 1 : 0);
        }
    };
    const std::string printed = printedBy([&] {
        for (int i = 0; i < kCount; ++i) {
            b.send(a, "x");
        }
        std::thread other(take);
        take();
        other.join();
    });
    EXPECT_EQ(received, kCount);
    EXPECT_EQ(printed, "");
}

TEST(UDPSocket, DescriptorNeverLeaks) {
    int last = -1;
    {
        UDPSocket socket;
        const int first = socket.CreateUDPServer(0, 0, true, true);
        EXPECT_NE(fcntl(first, F_GETFL) & O_NONBLOCK, 0);
        EXPECT_NE(fcntl(first, F_GETFD) & FD_CLOEXEC, 0);
        last = socket.CreateUDPServer(0, 0, false, false);
        EXPECT_NE(first, last);
        EXPECT_FALSE(fdIsOpen(first));
        EXPECT_TRUE(fdIsOpen(last));
    }
    EXPECT_FALSE(fdIsOpen(last));
}

TEST(UDPSocket, TakenPortIsABindErrorThatLeavesTheSocketUsable) {
    Open a;
    UDPSocket second;
    int fd = 0;
    const std::string printed =
        printedBy([&] { fd = second.CreateUDPServer(a.port, 1, true, false); });
    EXPECT_EQ(fd, -1);
    EXPECT_EQ(printed.substr(0, 12), "bind error: ");
    EXPECT_EQ(second.SendTo(kLoopback, a.port, "still", 5), 5);
    EXPECT_EQ(a.receive(), "still");
}

TEST(UDPSocket, NothingIsSentToWhatIsNoAddress) {
    Open a;
    for (const char* ip :
         {"", "kEth0Ip", "127.0.0.", "127.0.0.256", "127.0.0.1-8000", " 127.0.0.1", "x"}) {
        errno = 0;
        EXPECT_EQ(a.socket.SendTo(ip, a.port, "x", 1), -1) << "to '" << ip << "'";
        EXPECT_EQ(errno, 0) << "the kernel was asked to send to '" << ip << "'";
    }
    EXPECT_EQ(a.socket.SendTo(nullptr, a.port, "x", 1), -1);
    EXPECT_EQ(a.socket.SendTo(kLoopback, a.port, nullptr, 1), -1);
    EXPECT_EQ(a.socket.SendTo(kLoopback, a.port, "x", -1), -1);
    EXPECT_EQ(a.socket.SendTo(kLoopback, a.port, "x", LONG_MAX), -1);
    EXPECT_EQ(a.receive(), "");
}

TEST(UDPSocket, StoredDestinationHasToBeSetFirst) {
    Open a;
    int sent = 0;
    const std::string printed = printedBy([&] { sent = a.socket.SendTo("x", 1); });
    EXPECT_EQ(sent, -1);
    EXPECT_EQ(printed, "please intput client_ip and client_port\n");
    EXPECT_EQ(a.socket.AddBroadCast("lo"), 1);
    EXPECT_EQ(a.socket.SendTo("x", 1), -1) << "the interface has no broadcast address";
}

TEST(UDPSocket, ConnectedSocketWritesToItsPeer) {
    Open a, b;
    EXPECT_EQ(a.socket.AddBroadCast(nullptr), 1);
    sockaddr_in to = localAddress(b.fd);
    to.sin_addr.s_addr = inet_addr(kLoopback);
    ASSERT_EQ(connect(a.fd, reinterpret_cast<const sockaddr*>(&to), sizeof to), 0);
    a.socket.connected = 1;
    EXPECT_EQ(a.socket.SendTo("written", 7), 7);
    EXPECT_EQ(a.socket.SendTo("x", -1), -1);
    EXPECT_EQ(b.receive(), "written");
}

TEST(UDPSocket, EchoAnswersTheSenderAndPrintsNoFurtherThanTheLength) {
    Open a, b;
    EXPECT_EQ(a.socket.EchoTo("early", 5), -1);
    b.send(a, "status");
    a.receive();
    int sent = 0;
    const std::array<char, 4> unterminated{'a', 'b', 'c', 'd'};
    const std::string printed = printedBy([&] { sent = a.socket.EchoTo(unterminated.data(), 3); });
    EXPECT_EQ(sent, 3);
    EXPECT_EQ(printed, "Receive client (127.0.0.1:" + std::to_string(b.port) +
                           ") on socket: " + std::to_string(a.fd) + "  \nmessage:abc\n");
    EXPECT_EQ(b.receive(), "abc");
    EXPECT_EQ(a.socket.EchoTo("a\0b", 3), 3);
    EXPECT_EQ(b.receive(), std::string("a\0b", 3));
    EXPECT_EQ(a.socket.EchoTo("x", -1), -1);
}

TEST(UDPSocket, DrainDiscardsWhatWaitsAndSaysSo) {
    Open b;
    for (const bool nonBlocking : {true, false}) {
        Open drained(nonBlocking);
        for (const std::string text : {"1", "", "3"}) {
            b.send(drained, text);
        }
        int result = -1;
        const std::string printed = printedBy([&] { result = drained.socket.readEmptySocket(); });
        EXPECT_EQ(result, 0);
        EXPECT_EQ(printed, "socket read emput\n");
        EXPECT_EQ(portOf(drained.socket.GetClientSockaddr()), b.port);
        pollfd waiting{drained.fd, POLLIN, 0};
        EXPECT_EQ(poll(&waiting, 1, 0), 0) << "something is left";
    }
}

}  // namespace
