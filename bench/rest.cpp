#include <thread>

#include "rows.h"
#include "subject.h"

/// Start, idle, memory, and what a crossing takes.

namespace {

constexpr int kIdleSeconds = 5;
constexpr int kCrossings = 20;

/// Milliseconds from the movement over the edge to the new box's first datagram, its lights; the
/// pause for them and the query come behind.
std::vector<double> crossings(Subject& console) {
    std::vector<double> milliseconds;
    for (int i = 0; i < kCrossings; ++i) {
        const bool right = i % 2 == 0;
        console.drop();
        const auto before = Clock::now();
        console.put(1, movement(right ? 5000 : -5000, 0));
        if (const auto arrival = console.next(1000, right)) {
            milliseconds.push_back(
                std::chrono::duration<double, std::milli>(arrival->when - before).count());
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
    }
    return milliseconds;
}

}  // namespace

void measureRest(Table& table) {
    progress("start, idle, a crossing");
    Subject console({Program::kConsole});
    table.add("start until devices are served", "ms",
              std::chrono::duration<double, std::milli>(console.started()).count());
    table.add("  of it required: 80 ms for mice, 80 for keyboards", "ms", 160);
    const auto crossed = crossings(console);
    table.add("a crossing, to the new box's first datagram", "ms", median(crossed));
    table.add("  that never came, of 20", "", kCrossings - static_cast<double>(crossed.size()));
    const double cpu = console.cpuSeconds();
    const long wakes = console.wakeUps();
    std::this_thread::sleep_for(std::chrono::seconds(kIdleSeconds));
    table.add("idle, processor time a second", "ms",
              (console.cpuSeconds() - cpu) * 1000 / kIdleSeconds);
    table.add("idle, wake-ups a second", "",
              static_cast<double>(console.wakeUps() - wakes) / kIdleSeconds);
    table.add("memory at most (VmHWM)", "kB", static_cast<double>(console.status("VmHWM")));
    table.add("threads", "", static_cast<double>(console.status("Threads")));
}
