#include "net/udp_socket.h"

#include <poll.h>

#include <cerrno>
#include <chrono>
#include <climits>

#include "unit/net/open_socket.h"

namespace {

TEST(UDPSocket, ReceivingTellsTheSender) {
    Open a, b, c;
    EXPECT_EQ(b.send(a, "hello"), 5);
    EXPECT_EQ(a.receive(), "hello");
    EXPECT_EQ(a.socket.GetClientSockaddr().sin_addr.s_addr, inet_addr(kLoopback));
    c.send(a, "second");
    char text[3];
    sockaddr_in sender{};
    EXPECT_EQ(a.socket.Receive(text, 3, sender), 3);
    EXPECT_EQ(std::string(text, 3), "sec");
    EXPECT_EQ(Open::portOf(sender), c.port);
    EXPECT_EQ(Open::portOf(a.socket.GetClientSockaddr()), b.port) << "of RecvFrom alone";
    EXPECT_EQ(a.receive(), "") << "the rest of a cut datagram came back";
    EXPECT_EQ(a.socket.Receive(text, -1, sender), -1);
}

TEST(UDPSocket, EmptySocketGivesUpAfterItsTime) {
    Open polled, blocking(false);
    std::string got = "none";
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(printedBy([&] { got = polled.receive(); }), "");
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(19));
    EXPECT_EQ(got, "");
    EXPECT_EQ(polled.socket.GetClientSockaddr().sin_addr.s_addr, 0U);

    EXPECT_EQ(fcntl(blocking.fd, F_GETFL) & O_NONBLOCK, 0);
    EXPECT_EQ(blocking.receive(), "failed");
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_EQ(blocking.socket.setTimeOut(), 0);
    timeval limit{};
    socklen_t size = sizeof limit;
    ASSERT_EQ(getsockopt(blocking.fd, SOL_SOCKET, SO_RCVTIMEO, &limit, &size), 0);
    EXPECT_GE(limit.tv_usec, 15000);  // the kernel rounds up to its own tick
    EXPECT_LT(limit.tv_usec, 35000);
}

TEST(UDPSocket, DescriptorNeverLeaks) {
    int last = -1;
    {
        Open first;
        EXPECT_NE(fcntl(first.fd, F_GETFD) & FD_CLOEXEC, 0);
        last = first.socket.CreateUDPServer(0, 0, false, false);
        EXPECT_FALSE(fdIsOpen(first.fd));
    }
    EXPECT_FALSE(fdIsOpen(last));
}

TEST(UDPSocket, TakenPortIsABindErrorThatLeavesTheSocketUsable) {
    Open a;
    UDPSocket second;
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(second.CreateUDPServer(a.port, 1, true, false), -1); }),
              "bind error: Address already in use\n");
    EXPECT_EQ(second.BindLocalAddr("lo", 0, true), 1);
    EXPECT_EQ(second.SendTo(kLoopback, a.port, "still", 5), 5);
    EXPECT_EQ(a.receive(), "still");
    EXPECT_EQ(second.BindLocalAddr("lo", 0, true), 0) << "bound twice";
}

TEST(UDPSocket, NothingIsSentToWhatIsNoAddress) {
    Open a;
    for (const char* ip : {"127.0.0.1", "127.1", "127.0.0.01", "0x7f.0.0.1", "127.0.0.1 "}) {
        EXPECT_EQ(a.socket.SendTo(ip, a.port, ip, 1), 1) << "to '" << ip << "'";
        EXPECT_EQ(a.receive(), std::string(ip, 1));
    }
    for (const char* ip :
         {"", "kEth0Ip", "127.0.0.", "127.0.0.256", "127.0.0.1-8000", " 127.0.0.1", "x"}) {
        errno = 0;
        EXPECT_EQ(a.socket.SendTo(ip, a.port, "x", 1), -1) << "to '" << ip << "'";
        EXPECT_EQ(errno, 0) << "the kernel was asked to send to '" << ip << "'";
    }
    EXPECT_EQ(a.socket.SendTo(kLoopback, a.port, "x", -1), -1);
    EXPECT_EQ(a.socket.SendTo(kLoopback, a.port, "x", LONG_MAX), -1);
    EXPECT_EQ(a.receive(), "");
}

TEST(UDPSocket, EchoAnswersTheSenderAndPrintsNoFurtherThanTheLength) {
    Open a, b;
    EXPECT_EQ(a.socket.EchoTo("early", 5), -1);
    b.send(a, "status");
    a.receive();
    const char unterminated[] = {'a', 'b', 'c', 'd'};
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(a.socket.EchoTo(unterminated, 3), 3); }),
              "Receive client (127.0.0.1:" + std::to_string(b.port) +
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
        EXPECT_EQ(printedBy([&] { EXPECT_EQ(drained.socket.readEmptySocket(), 0); }),
                  "socket read emput\n");
        EXPECT_EQ(Open::portOf(drained.socket.GetClientSockaddr()), b.port);
        pollfd waiting{drained.fd, POLLIN, 0};
        EXPECT_EQ(poll(&waiting, 1, 0), 0) << "something is left";
    }
}

TEST(UDPSocket, DrainEndsUnderAFlood) {
    Open flooded, b;
    const int room = 8 << 20;
    if (setsockopt(flooded.fd, SOL_SOCKET, SO_RCVBUFFORCE, &room, sizeof room) != 0) {
        GTEST_SKIP() << "no room for so many datagrams";
    }
    for (int i = 0; i < 1100; ++i) {
        b.send(flooded, "x");
    }
    EXPECT_EQ(flooded.socket.readEmptySocket(), 0);
    int left = 0;
    for (; flooded.receive() == "x"; ++left) {
    }
    EXPECT_EQ(left, 1100 - 1024);
}

}  // namespace
