#include <functional>
#include <memory>
#include <thread>

#include "rows.h"
#include "subject.h"

/// Delays, full speed, and keys beside mice; the console and the bare loops in turn.

namespace {

constexpr int kRounds = 5;
constexpr int kSamples = 300;
constexpr int kMovements = 40000;
constexpr int kLostAfter = 1000;  // milliseconds

struct Three {
    std::array<Subject, 3> subjects{Subject({Program::kConsole}), Subject({Program::kPlainLoop}),
                                    Subject({Program::kBatchLoop})};
};

/// Microseconds from the write to the datagram, of each that arrived.
std::vector<double> delays(Subject& subject, int node,
                           const std::function<std::vector<InputRecord>(int)>& records) {
    std::vector<double> microseconds;
    for (int i = 0; i < kSamples; ++i) {
        std::this_thread::sleep_for(std::chrono::microseconds(1500));
        subject.drop();
        const auto before = Clock::now();
        subject.put(node, records(i));
        if (const auto arrival = subject.next(kLostAfter)) {
            microseconds.push_back(
                std::chrono::duration<double, std::micro>(arrival->when - before).count());
        }
    }
    return microseconds;
}

/// Microseconds of processor time a movement, and movements a second.
struct Speed {
    double cpu = 0, perSecond = 0;
    int lost = 0;
};

Speed fullSpeed(Subject& subject) {
    subject.drop();
    const double cpu = subject.cpuSeconds();
    const auto start = Clock::now();
    std::jthread writer([&subject] {
        for (int i = 0; i < kMovements; ++i) {
            subject.put(1, movement(i % 2 == 0 ? 1 : -1, 0));
        }
    });
    int arrived = 0;
    auto last = start;
    while (arrived < kMovements) {
        const auto arrival = subject.next(kLostAfter);
        if (!arrival) {
            break;
        }
        arrived += arrival->isPointer() ? 1 : 0;
        last = arrival->when;
    }
    return {(subject.cpuSeconds() - cpu) * 1e6 / kMovements,
            arrived / std::chrono::duration<double>(last - start).count(), kMovements - arrived};
}

struct Kind {
    const char* name;
    int node;
    std::function<std::vector<InputRecord>(int)> records;
};

constexpr std::array kShares{0.5, 0.99, 0.999, 1.0};
constexpr std::array kShareNames{"p50", "p99", "p99.9", "max"};

/// Microseconds of the three, and of each share the ratios of the rounds.
struct Delays {
    std::array<std::vector<double>, 3> all;
    /// The console's over the plain loop's, and the plain loop's over its own of the same round.
    std::array<std::vector<double>, kShares.size()> ratios, loops;
};

/// One round: the three in turn, then the plain loop once more.
void addRound(Delays& delay, Three& three, const Kind& kind) {
    std::array<std::vector<double>, 3> now;
    for (std::size_t i = 0; i < now.size(); ++i) {
        now[i] = delays(three.subjects[i], kind.node, kind.records);
        delay.all[i].insert(delay.all[i].end(), now[i].begin(), now[i].end());
    }
    const auto again = delays(three.subjects[1], kind.node, kind.records);
    for (std::size_t share = 0; share < kShares.size(); ++share) {
        const double plain = percentile(now[1], kShares[share]);
        delay.ratios[share].push_back(percentile(now[0], kShares[share]) / plain);
        delay.loops[share].push_back(percentile(again, kShares[share]) / plain);
    }
}

void addRows(Table& table, const char* name, const Delays& delay) {
    const auto& [console, plain, batch] = delay.all;
    for (std::size_t share = 0; share < kShares.size(); ++share) {
        const double at = kShares[share];
        table.add(std::string(name) + " " + kShareNames[share], "us", percentile(console, at),
                  percentile(plain, at), percentile(batch, at), median(delay.ratios[share]));
        table.add("  the plain loop against itself", "ratio", median(delay.loops[share]));
    }
    const int sent = kRounds * kSamples;
    const auto lost = [sent](const std::vector<double>& arrived) {
        return sent - static_cast<double>(arrived.size());
    };
    table.add("  lost of " + std::to_string(sent), "", lost(console), lost(plain), lost(batch));
}

}  // namespace

void measureDelays(Table& table) {
    const Kind kinds[] = {{"key", 0, [](int i) { return key(i % 2 == 0); }},
                          {"movement", 1, [](int i) { return movement(i % 2 == 0 ? 1 : -1, 0); }},
                          {"click", 1, [](int i) { return click(i % 2 == 0); }}};
    const auto three = std::make_unique<Three>();
    for (const Kind& kind : kinds) {
        progress(std::string("delays of a ") + kind.name);
        Delays delay;
        for (int round = 0; round < kRounds; ++round) {
            addRound(delay, *three, kind);
        }
        addRows(table, kind.name, delay);
    }
}

double cpuRatioAtFullSpeed() {
    progress("full speed");
    Subject console({Program::kConsole}), plain({Program::kPlainLoop});
    std::vector<double> ratios;
    for (int round = 0; round < kRounds; ++round) {
        ratios.push_back(fullSpeed(console).cpu / fullSpeed(plain).cpu);
    }
    return median(ratios);
}

void measureFullSpeed(Table& table) {
    progress("full speed");
    auto three = std::make_unique<Three>();
    std::array<std::vector<double>, 3> cpu, speed;
    std::vector<double> cpuRatio, speedRatio;
    std::array<double, 3> lost{};
    for (int round = 0; round < kRounds; ++round) {
        for (std::size_t i = 0; i < 3; ++i) {
            const Speed now = fullSpeed(three->subjects[i]);
            cpu[i].push_back(now.cpu);
            speed[i].push_back(now.perSecond);
            lost[i] += now.lost;
        }
        cpuRatio.push_back(cpu[0].back() / cpu[1].back());
        speedRatio.push_back(speed[0].back() / speed[1].back());
    }
    table.add("processor time a movement at full speed", "us", median(cpu[0]), median(cpu[1]),
              median(cpu[2]), median(cpuRatio));
    table.add("movements a second at full speed", "", median(speed[0]), median(speed[1]),
              median(speed[2]), median(speedRatio));
    table.add("  lost on the way to the box", "", lost[0], lost[1], lost[2]);
}

namespace {

/// Moves `mice` mice `hertz` times a second until it is told to stop; counts the movements.
class Mover {
 public:
    Mover(Subject& subject, int mice, int hertz)
        : thread_([this, &subject, mice, hertz](const std::stop_token& stop) {
              auto next = Clock::now();
              for (int i = 0; !stop.stop_requested(); ++i) {
                  for (int mouse = 1; mouse <= mice; ++mouse) {
                      subject.put(mouse, movement(i % 2 == 0 ? 1 : -1, 0));
                      ++sent_;
                  }
                  std::this_thread::sleep_until(next +=
                                                std::chrono::microseconds(1'000'000 / hertz));
              }
          }) {}
    int stop() {
        thread_.request_stop();
        thread_.join();
        return sent_;
    }

 private:
    std::atomic<int> sent_{0};
    std::jthread thread_;
};

}  // namespace

void measureMice(Table& table) {
    const struct { int mice, hertz; } kinds[] = {{1, 125}, {1, 1000}, {1, 8000}, {8, 1000}};
    for (const auto& [mice, hertz] : kinds) {
        const std::string name = std::to_string(mice) + (mice == 1 ? " mouse of " : " mice of ") +
                                 std::to_string(hertz) + " Hz, a key beside";
        progress(name);
        Subject console({Program::kConsole, mice});
        Mover mover(console, mice, hertz);
        std::vector<double> late;
        int moved = 0;
        const auto until = [&](Clock::time_point end, bool forKey) -> std::optional<Arrival> {
            while (Clock::now() < end) {
                const auto arrival = console.next(10);
                moved += arrival && arrival->isPointer() ? 1 : 0;
                if (forKey && arrival && arrival->isKey()) {
                    return arrival;
                }
            }
            return std::nullopt;
        };
        constexpr int kKeys = 100;
        for (int i = 0; i < kKeys; ++i) {
            const auto before = Clock::now();
            console.put(0, key(i % 2 == 0));
            if (const auto arrival = until(before + std::chrono::seconds(1), true)) {
                late.push_back(
                    std::chrono::duration<double, std::micro>(arrival->when - before).count());
            }
            until(before + std::chrono::milliseconds(20), false);
        }
        const int sent = mover.stop();
        until(Clock::now() + std::chrono::milliseconds(200), false);
        table.add(name + ", p50", "us", percentile(late, 0.5));
        table.add("  p99", "us", percentile(late, 0.99));
        table.add("  keys lost of 100", "", kKeys - static_cast<double>(late.size()));
        table.add("  movements lost of " + std::to_string(sent), "", sent - moved);
    }
}
