#include <linux/input-event-codes.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "rig/isolation.h"
#include "rig/world.h"

/// Measures the real daemon on a virtual board: from the write of an event into its node to the
/// arrival of the datagram at the box, then memory and idle processor time.

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kRounds = 1000;
constexpr rig::Milliseconds kLimit{2000};
constexpr rig::Milliseconds kBetween{2};
constexpr const char* kBox = "127.0.0.31";

/// Microseconds of each round; fewer than asked when a datagram was lost.
std::vector<double> measure(rig::Box& box, const std::function<void(int round)>& send) {
    std::vector<double> microseconds;
    for (int round = 0; round < kRounds; ++round) {
        std::this_thread::sleep_for(kBetween);
        box.clear();
        const auto before = Clock::now();
        send(round);
        const auto report = box.next(kLimit);
        if (!report) {
            std::printf("round %d: no datagram\n", round);
            continue;
        }
        microseconds.push_back(
            std::chrono::duration<double, std::micro>(report->when - before).count());
    }
    return microseconds;
}

void print(const char* what, std::vector<double> microseconds) {
    if (microseconds.empty()) {
        std::printf("%-9s nothing arrived\n", what);
        return;
    }
    std::sort(microseconds.begin(), microseconds.end());
    const auto at = [&](double share) {
        return microseconds[static_cast<std::size_t>(share *
                                                     static_cast<double>(microseconds.size() - 1))];
    };
    std::printf("%-9s %zu rounds  median %.0f us  p99 %.0f us  max %.0f us\n", what,
                microseconds.size(), at(0.5), at(0.99), at(1.0));
}

}  // namespace

int main(int argc, char** argv) {
    const int idleSeconds = argc > 1 ? std::atoi(argv[1]) : 30;
    rig::enterOwnNetwork();
    rig::World world(rig::usualPlan());
    if (const auto problem = world.start()) {
        std::printf("%s\n", problem->c_str());
        return 1;
    }
    rig::Box& box = world.box(kBox);
    const rig::Board& board = world.board;
    print("key",
          measure(box, [&](int round) { board.emit(0, EV_KEY, KEY_A, round % 2 == 0 ? 1 : 0); }));
    print("movement", measure(box, [&](int round) {
              board.emit(1, EV_REL, REL_X, round % 2 == 0 ? 1 : -1);
              board.emit(1, EV_SYN, SYN_REPORT, 0);
          }));
    std::printf("memory    VmHWM %ld KiB, %d threads, %d descriptors\n",
                world.daemon().peakMemoryKiB(), world.daemon().threads(),
                world.daemon().descriptors());
    const double before = world.daemon().cpuSeconds();
    std::this_thread::sleep_for(std::chrono::seconds(idleSeconds));
    std::printf("idle      %.0f ms of processor time in %d s\n",
                (world.daemon().cpuSeconds() - before) * 1000.0, idleSeconds);
    return 0;
}
