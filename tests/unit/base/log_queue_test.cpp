#include "base/log_queue.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <termios.h>

#include <array>
#include <chrono>
#include <csignal>
#include <thread>

#include "unit/fixture.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

std::string readNow(int fd) {
    std::string text;
    std::array<char, 4096> buffer{};
    for (ssize_t got = 0; (got = recv(fd, buffer.data(), buffer.size(), MSG_DONTWAIT)) > 0;) {
        text += "[" + std::string(buffer.data(), static_cast<std::size_t>(got)) + "]";
    }
    return text;
}

/// A reader that sees where a write ends; the log writes to its `.in`.
struct Reader {
    explicit Reader(int kind = SOCK_SEQPACKET) {
        int pair[2] = {-1, -1};
        EXPECT_EQ(socketpair(AF_UNIX, kind, 0, pair), 0);
        in = pair[0], out = pair[1];
    }
    ~Reader() { close(in), close(out); }
    int in = -1, out = -1;
};

TEST(LogQueue, KeepsTheOrderOfBothStreamsAndWritesNeighboursAtOnce) {
    LogQueue queue;
    const Reader both;
    const int err = dup(both.in);
    for (const auto& [fd, line] : {std::pair{both.in, "a\n"},
                                   {both.in, "b\n"},
                                   {err, "c\n"},
                                   {-1, "x\n"},
                                   {both.in, "d\n"}}) {
        queue.append(fd, line);
    }
    queue.writeOut();
    EXPECT_EQ(readNow(both.out), "[a\nb\n][c\n][d\n]");
    close(err);
}

/// A pipe that is full most of the time, read to its end.
TEST(LogQueue, WhatDoesNotFitIsToldInItsPlaceAndTheRestComesWhole) {
    int ways[2] = {-1, -1};
    ASSERT_EQ(pipe(ways), 0);
    fcntl(ways[1], F_SETFL, O_NONBLOCK);  // as a shell may hand it over
    LogQueue queue;
    std::string expected;
    std::size_t room = LogQueue::kSize, leftOut = 0;
    for (int i = 100; i < 400; ++i) {
        const std::string line = std::to_string(i) + std::string(996, 'x') + "\n";
        const std::size_t taken = line.size() + 8;  // with its header
        expected += room >= taken ? line : "";
        leftOut += room >= taken ? 0 : line.size();
        room -= room >= taken ? taken : 0;
        queue.append(ways[1], line);
    }
    ASSERT_GT(leftOut, 0U);
    expected +=
        "log reader stood still, left out " + std::to_string(leftOut) + " bytes\non again\n";
    std::jthread writer([&] {
        queue.writeOut();
        queue.append(ways[1], "on again\n");
        queue.writeOut();
        close(ways[1]);
    });
    std::string got;
    std::array<char, 1000> buffer{};
    for (ssize_t size = 0; (size = read(ways[0], buffer.data(), buffer.size())) > 0;) {
        got.append(buffer.data(), static_cast<std::size_t>(size));
    }
    EXPECT_EQ(got.size(), expected.size());
    EXPECT_TRUE(got == expected) << got.substr(got.size() - 100);
    close(ways[0]);
}

TEST(LogQueue, AReaderThatWentAwayCostsNothing) {
    LogQueue queue;
    Reader gone;
    close(std::exchange(gone.out, -1));
    const auto before = std::signal(SIGPIPE, SIG_IGN);
    const Reader here;
    queue.append(gone.in, "lost\n");
    queue.append(here.in, "kept\n");
    queue.writeOut();
    EXPECT_EQ(readNow(here.out), "[kept\n]");
    std::signal(SIGPIPE, before);
}

/// Its output is stopped: poll calls it writable and a write sleeps.
TEST(LogQueue, NobodyWaitsForAStalledTerminalButTheWriter) {
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_EQ(grantpt(terminal) | unlockpt(terminal), 0);
    const int line = open(ptsname(terminal), O_RDWR | O_NOCTTY);
    ASSERT_EQ(tcflow(line, TCOOFF), 0);
    auto* const queue = new LogQueue;  // its writer never ends
    std::thread([queue] {
        for (;;) {
            queue->wait();
            queue->writeOut();
        }
    }).detach();
    Clock::duration longest{};
    for (int i = 0; i < 1000; ++i) {
        const auto before = Clock::now();
        queue->append(line, "a line\n");
        longest = std::max(longest, Clock::now() - before);
    }
    EXPECT_LT(longest, milliseconds(100)) << "a write of the terminal sleeps for ever";
    const auto before = Clock::now();
    EXPECT_FALSE(queue->waitUntilWritten(20));
    EXPECT_LT(Clock::now() - before, milliseconds(1000));
    ASSERT_EQ(tcflow(line, TCOON), 0);
    std::string got;
    std::array<char, 4096> buffer{};
    pollfd waiting{terminal, POLLIN, 0};
    while (got.size() < 8000 && poll(&waiting, 1, 3000) == 1) {
        got.append(buffer.data(), static_cast<std::size_t>(
                                      std::max<ssize_t>(read(terminal, buffer.data(), 4096), 0)));
    }
    EXPECT_EQ(got.size(), 8000U) << "a terminal turns a line end into two characters";
    EXPECT_TRUE(queue->waitUntilWritten(1000));
    close(line);
    close(terminal);
}

/// A writer that waits for its reader, and a crash beside it.
[[noreturn]] void crashBesideAWriter() {
    LogQueue queue;
    const Reader reader(SOCK_STREAM);
    fcntl(reader.in, F_SETFL, O_NONBLOCK);
    std::string all;
    for (int i = 100; i < 350; ++i) {
        const std::string line = std::to_string(i) + std::string(990, '.') + "\n";
        queue.append(reader.in, line);
        all += line;
    }
    std::thread([&] { queue.writeOut(); }).detach();
    std::string got;
    std::array<char, 4096> buffer{};
    const auto readSome = [&] {
        const ssize_t size = read(reader.out, buffer.data(), buffer.size());
        got.append(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    };
    readSome();  // the writer is in the middle of a line
    std::thread rest([&] {
        while (got.size() < all.size()) {
            readSome();
        }
    });
    queue.writeAtACrash();
    rest.join();
    _exit(got == all ? 0 : 1);
}

TEST(LogQueue, ACrashWritesTheRestOnce) {
    EXPECT_EXIT(crashBesideAWriter(), testing::ExitedWithCode(0), "");
}

TEST(LogQueue, AThreadThatDefersWakesNobodyUntilItWaitsOrMuchIsThere) {
    const Reader reader;
    std::thread([] {
        for (;;) {
            logQueue().wait();
            logQueue().writeOut();
        }
    }).detach();
    const auto arrives = [&](int ms) {
        pollfd waiting{reader.out, POLLIN, 0};
        return poll(&waiting, 1, ms) == 1 ? readNow(reader.out) : "nothing";
    };
    logQueue().append(reader.in, "at once\n");
    EXPECT_EQ(arrives(3000), "[at once\n]");
    const DeferredLog deferred;
    std::this_thread::sleep_for(milliseconds(20));  // the writer sleeps again
    logQueue().append(reader.in, "later\n");
    EXPECT_EQ(arrives(30), "nothing");
    letLogLeave();
    EXPECT_EQ(arrives(3000), "[later\n]");
    std::this_thread::sleep_for(milliseconds(20));
    for (int i = 0; i < 33; ++i) {
        logQueue().append(reader.in, std::string(1000, '.'));
    }
    EXPECT_NE(arrives(3000), "nothing");
    logQueue().waitUntilWritten(1000);
}

}  // namespace
