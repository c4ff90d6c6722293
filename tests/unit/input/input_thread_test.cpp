#include "input/input_thread.h"

#include <chrono>
#include <functional>
#include <thread>

#include "unit/input/fifo_root.h"

namespace {

/// How many entries a directory such as /proc/self/fd has.
long entriesOf(const char* directory) {
    return std::distance(std::filesystem::directory_iterator(directory), {});
}

/// Looks again and again, for at most ten seconds.
bool soon(const std::function<bool()>& holds) {
    for (int i = 0; i < 10'000 && !holds(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return holds();
}

TEST(InputThread, StoppedAtAnyMomentItLeavesNothingBehind) {
    const FifoRoot root{3};
    DeviceCounts counts;
    Devices devices{counts};
    ConsoleState console;
    InputSlices slices{devices, console};
    console.duties.hotPlugFlag = 0;
    devices.panel.touchNamed = true;
    long descriptors = 0;
    long threads = 0;
    printedBy([&] {
        for (int round = 0; round <= 200; ++round) {
            list(devices.keyDevices, "event0");
            list(devices.mouseDevices, "event1");
            list(devices.touchDevices, "event2");
            devices.listenerAlive = 0;
            startInputThread(slices);
            if (round % 25 == 0) {
                EXPECT_TRUE(soon([&] { return devices.listenerAlive == 1; }));
            } else {
                std::this_thread::sleep_for(std::chrono::milliseconds(round % 10));
            }
            stopInputThread();
            closeInputFd(devices, console.lights, true, true, true);
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
