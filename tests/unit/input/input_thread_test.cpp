#include "input/input_thread.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <thread>

#include "app/base/singleton.h"
#include "unit/input/fifo_board.h"
#include "unit/net/open_socket.h"

namespace {

using std::chrono::milliseconds;

/// Looks again and again, for at most ten seconds.
bool soon(const std::function<bool()>& holds) {
    for (int i = 0; i < 10'000 && !holds(); ++i) {
        std::this_thread::sleep_for(milliseconds(1));
    }
    return holds();
}

struct InputThread : testing::Test {
    InputThread() : events(Singleton<inputevent_>::instance()) {
        EXPECT_TRUE(board.addFifo("event0"));
        EXPECT_TRUE(board.addFifo("event1"));
        EXPECT_TRUE(board.addFifo("event2"));
        events->hotPlugFlag = 0;
        events->touchNamed = 1;
    }

    void start() {
        list(events->keyDevices, "event0");
        list(events->mouseDevices, "event1");
        list(events->touchDevices, "event2");
        events->listenerAlive = 0;
        startInputThread();
    }

    void stop() {
        stopInputThread();
        events->closeInputFd(true, true, true);
    }

    bool listens() {
        return soon([&] { return events->listenerAlive == 1; });
    }

    FifoBoard board;
    std::shared_ptr<inputevent_> events;
};

TEST_F(InputThread, StoppedAtAnyMomentItLeavesNothingBehind) {
    printedBy([&] {  // the first thread of a process may bring helpers of the C library with it
        start();
        stop();
    });
    const long descriptors = entriesOf("/proc/self/fd");
    const long threads = entriesOf("/proc/self/task");
    printedBy([&] {
        for (int round = 0; round < 200; ++round) {
            start();
            if (round % 25 == 0) {
                EXPECT_TRUE(listens());
            } else {
                std::this_thread::sleep_for(milliseconds(round % 10));
            }
            stop();
        }
    });
    EXPECT_EQ(entriesOf("/proc/self/fd"), descriptors);
    EXPECT_TRUE(soon([&] { return entriesOf("/proc/self/task") <= threads; }));
}

TEST_F(InputThread, OneThatHasEndedIsStoppedWithoutHarm) {
    const std::string printed = printedBy([&] {
        start();
        EXPECT_TRUE(listens());
        const EventNode node = openEventNode("/dev/input/event0");
        EXPECT_EQ(write(node.fd, "12345", 5), 5);
        EXPECT_TRUE(soon([&] { return events->listenerAlive == 0; }));
        stop();
        stopInputThread();
        reportInputThreadCancel();
        close(node.fd);
    });
    EXPECT_NE(printed.find("open event ok\n"), std::string::npos);
    EXPECT_NE(printed.find("read key error or in osd pause 0 len 5\nhot input event\n"),
              std::string::npos)
        << printed;
    EXPECT_NE(printed.find("\ninput thread cancel\n"), std::string::npos) << printed;
}

}  // namespace
