#include "input/probe.h"

#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

#include "unit/fixture.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// Keyboards that echo nothing by themselves: what they answer is written to their other end.
struct Probe : testing::Test {
    ~Probe() override {
        for (const int end : ends) {
            close(end);
        }
    }

    /// Adds an open keyboard; returns its other end.
    int plug(const std::string& name) {
        int pair[2] = {-1, -1};
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair), 0);
        InputDeviceList& list = devices.keyDevices;
        name.copy(list.names[list.count].data(), InputDeviceList::kNameSize - 1);
        list.fds[list.count] = pair[0];
        list.count = list.count + 1;
        ends.push_back(pair[1]);
        return pair[1];
    }

    static void answer(int end) {
        const InputRecord record{};
        send(end, &record, sizeof record, MSG_NOSIGNAL);
    }

    /// Waits until the probe has taken every answer, or has ended.
    static void untilTaken(int end) {
        for (int waiting = 1; ioctl(end, SIOCOUTQ, &waiting) == 0 && waiting > 0;) {
            std::this_thread::sleep_for(milliseconds(1));
        }
    }

    /// Probes; returns the names of those that are kept, and how long it took.
    std::string kept() {
        const Clock::time_point start = Clock::now();
        printedBy([this] { check_input_event(devices, lights); });
        took = Clock::now() - start;
        std::string names;
        for (std::size_t i = 0; i < devices.keyDevices.count; ++i) {
            names += devices.keyDevices.name(i) + std::string(" ");
        }
        return names;
    }

    const Root root;
    DeviceCounts counts;
    Devices devices{counts};
    Lights lights;
    std::vector<int> ends;
    Clock::duration took{};
};

TEST_F(Probe, EachNodesWaitIsItsOwnAndAnEndlessTalkerEndsItToo) {
    constexpr milliseconds kTalk{5000};
    plug("silent");
    shutdown(plug("ended"), SHUT_WR);
    const int talker = plug("talker"), late = plug("late");
    answer(plug("prompt"));
    std::atomic<bool> over{false};
    std::jthread answers([&] {
        const Clock::time_point start = Clock::now();
        bool lateHasSpoken = false;
        while (!over && Clock::now() - start < kTalk) {
            std::this_thread::sleep_for(milliseconds(10));
            answer(talker);
            if (!lateHasSpoken && Clock::now() - start > milliseconds(200)) {
                untilTaken(talker);  // the probe looks around after its 80 ms, however slow it is
                answer(talker);
                untilTaken(talker);
                answer(late);
                lateHasSpoken = true;
            }
        }
    });
    EXPECT_EQ(kept(), "talker prompt ");
    over = true;
    EXPECT_LT(took, milliseconds(2000)) << "the probe waits for the talker's end";
}

TEST_F(Probe, AfterTheLastAnswerNobodyIsWaitedFor) {
    Clock::duration fastest = Clock::duration::max();
    for (int round = 0; round < 10 && fastest >= milliseconds(350); ++round) {  // a busy machine
        closeInputFd(devices, lights, true, true, true);
        answer(plug("prompt"));
        plug("silent");
        EXPECT_EQ(kept(), "prompt ");
        EXPECT_GE(took, milliseconds(80));
        fastest = std::min(fastest, took);
    }
    EXPECT_LT(fastest, milliseconds(350)) << "silent nodes are waited for until the very end";
}

}  // namespace
