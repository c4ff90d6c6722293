#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <functional>
#include <thread>

#include "rows.h"
#include "subject.h"

/// A key's delay whatever happens to the log.

namespace {

constexpr int kKeys = 250;
constexpr int kMostMissed = 3;  ///< then it stands still
constexpr double kMissed = 3000;
constexpr std::size_t kSlowBytes = 13'000;  // a second

/// Reads `fd`, at most so many bytes a second (0: all), until its other end is closed.
std::jthread reader(int fd, std::size_t bytesPerSecond) {
    return std::jthread([fd, bytesPerSecond](const std::stop_token& stop) {
        std::array<char, 4096> buffer{};
        const std::size_t most = bytesPerSecond == 0 ? buffer.size() : bytesPerSecond / 20;
        while (!stop.stop_requested()) {
            pollfd waiting{fd, POLLIN, 0};
            if (poll(&waiting, 1, 50) == 1 && read(fd, buffer.data(), most) <= 0) {
                return;
            }
            if (bytesPerSecond != 0) {
                std::this_thread::sleep_for(std::chrono::milliseconds(50));
            }
        }
    });
}

std::vector<double> keyDelays(Subject& console) {
    std::vector<double> milliseconds;
    for (int i = 0, missed = 0; i < kKeys && missed < kMostMissed; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        const auto before = Clock::now();
        console.put(0, key(i % 2 == 0));
        const auto arrival = console.next(static_cast<int>(kMissed));
        milliseconds.push_back(
            arrival ? std::chrono::duration<double, std::milli>(arrival->when - before).count()
                    : kMissed);
        missed += arrival ? 0 : 1;
    }
    return milliseconds;
}

void addRow(Table& table, const char* name, int log,
            const std::function<void()>& whenStarted = {}) {
    progress(std::string("log to ") + name);
    Subject console({Program::kConsole, 1, log});
    if (whenStarted) {
        whenStarted();
    }
    const auto late = keyDelays(console);
    table.add(std::string("key, log to ") + name + ", p50", "ms", percentile(late, 0.5));
    table.add("  max", "ms", percentile(late, 1));
}

}  // namespace

void measureLogs(Table& table) {
    addRow(table, "nothing", -1);
    std::FILE* file = std::tmpfile();
    addRow(table, "a file", fileno(file));
    std::fclose(file);
    for (const auto& [name, speed] :
         {std::pair<const char*, std::size_t>{"a read pipe", 0}, {"a slow pipe", kSlowBytes}}) {
        int ways[2] = {-1, -1};
        if (pipe2(ways, O_CLOEXEC) != 0) {
            table.addMissing(name, "no pipe");
            continue;
        }
        if (speed != 0) {
            fcntl(ways[1], F_SETPIPE_SZ, 4096);  // so that it is full within the run
        }
        const auto reads = reader(ways[0], speed);
        addRow(table, name, ways[1]);
        close(ways[1]);
    }
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (grantpt(terminal) != 0 || unlockpt(terminal) != 0) {
        table.addMissing("a stalled terminal", "no terminal");
        return;
    }
    const int line = open(ptsname(terminal), O_RDWR | O_NOCTTY | O_CLOEXEC);
    const auto reads = reader(terminal, 0);
    addRow(table, "a stalled terminal", line, [line] { tcflow(line, TCOOFF); });
    tcflow(line, TCOON);
    close(line);
}
