#include "input/input_thread.h"

#include <chrono>
#include <functional>
#include <thread>

#include "base/singleton.h"
#include "unit/input/listener_world.h"

namespace {

/// Looks again and again, for at most ten seconds.
bool soon(const std::function<bool()>& holds) {
    for (int i = 0; i < 10'000 && !holds(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return holds();
}

TEST(InputThread, StoppedAtAnyMomentItLeavesNothingBehind) {
    const FifoRoot root{3};
    const auto events = Singleton<inputevent_>::instance();
    events->hotPlugFlag = 0;
    events->touchNamed = 1;
    long descriptors = 0;
    long threads = 0;
    printedBy([&] {
        for (int round = 0; round <= 200; ++round) {
            list(events->keyDevices, "event0");
            list(events->mouseDevices, "event1");
            list(events->touchDevices, "event2");
            events->listenerAlive = 0;
            startInputThread();
            if (round % 25 == 0) {
                EXPECT_TRUE(soon([&] { return events->listenerAlive == 1; }));
            } else {
                std::this_thread::sleep_for(std::chrono::milliseconds(round % 10));
            }
            stopInputThread();
            events->closeInputFd(true, true, true);
            if (round == 0) {  // the first one may bring helpers of the C library with it
                descriptors = entriesOf("/proc/self/fd");
                threads = entriesOf("/proc/self/task");
            }
        }
        EXPECT_EQ(entriesOf("/proc/self/fd"), descriptors);
    });
    EXPECT_TRUE(soon([&] { return entriesOf("/proc/self/task") <= threads; }));
}

}  // namespace
