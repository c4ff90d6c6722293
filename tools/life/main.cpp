// tavrik-life: one console and a person who does anything at all, for as long as is wanted.
#include <linux/input-event-codes.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <thread>
#include <vector>

#include "life/person.h"
#include "rig/isolation.h"
#include "rig/tool.h"

namespace {

using life::Clock;
using life::Judge;
using life::Milliseconds;
using life::Person;

struct Wanted {
    double seconds = 20;
    Person::Options person;
    int milliseconds = 0;
    int acts = 300;
    bool storm = false;
};

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr bool kSanitized = true;  // its memory is the sanitizer's
#else
constexpr bool kSanitized = false;
#endif

/// What a daemon holds.
struct Holdings {
    long memory = 0;  ///< the most so far, in KiB
    int threads = 0, descriptors = 0;
    explicit Holdings(const rig::Daemon& daemon)
        : memory(daemon.peakMemoryKiB()),
          threads(daemon.threads()),
          descriptors(daemon.descriptors()) {}
};

/// Calls `work` so many times a second on a thread of its own, until it goes.
class Often {
 public:
    template <class Work>
    Often(int perSecond, Work work)
        : thread_([perSecond, work](const std::stop_token& stop) {
              auto next = Clock::now();
              while (!stop.stop_requested()) {
                  work();
                  std::this_thread::sleep_until(next +=
                                                std::chrono::microseconds(1'000'000 / perSecond));
              }
          }) {}

 private:
    std::jthread thread_;
};

constexpr int kMouseHertz = 8000, kOrdersPerSecond = 2000;

void shake(rig::World& world, int& at) { world.board.move(1, ++at % 2 == 0 ? 1 : -1, 0); }

/// Milliseconds from a key to its report, beside a mouse and orders that make no pause.
std::vector<double> keysInAStorm(rig::World& world, Judge& judge) {
    std::vector<double> late;
    int at = 0;
    const Often mouse(kMouseHertz, [&] { shake(world, at); });
    const Often orders(kOrdersPerSecond,
                       [&world] { world.command("[seq]\n[control]=127.0.0.20\nusb\nend"); });
    for (int i = 0; i < 250; ++i) {
        judge.forgetPresses();
        const auto before = Clock::now();
        world.board.key(0, KEY_A, true);
        const auto got = judge.presses(1, Milliseconds(1000));
        world.board.key(0, KEY_A, false);
        late.push_back(
            got.empty() ? 1000
                        : std::chrono::duration<double, std::milli>(got[0].when - before).count());
        std::this_thread::sleep_for(Milliseconds(15));
    }
    return late;
}

/// Everything at once for some seconds.
void storm(rig::World& world, Person& person, unsigned seed) {
    constexpr const char* kOrders[] = {"MTO:0,0",
                                       "OSDQUIT",
                                       "[seq]\n[control]=127.0.0.20\nusb_link_device\nend",
                                       "details&127.0.0.21#0,0,127.0.0.41-8000",
                                       "relation&0,0,127.0.0.20#1,0,127.0.0.21",
                                       "hotkey&"};
    int at = 0;
    std::mt19937 random(seed);
    const Often mouse(kMouseHertz, [&] { shake(world, at); });
    const Often orders(kOrdersPerSecond, [&world, &random, &kOrders] {
        world.command(kOrders[random() % std::size(kOrders)]);
    });
    for (int second = 0; second < 15; ++second) {
        person.plug();
        for (const auto end = Clock::now() + std::chrono::seconds(1); Clock::now() < end;) {
            person.act();
            std::this_thread::sleep_for(Milliseconds(10));
        }
    }
}

int fail(rig::World& world, const Person& person, const std::string& problem) {
    constexpr std::size_t kLast = 200;
    std::printf("%s\nWhat was done last:\n%s", problem.c_str(), person.past().c_str());
    const auto lines = world.daemon().lines();
    std::puts("What the daemon said last:");
    for (std::size_t i = lines.size() - std::min(lines.size(), kLast); i < lines.size(); ++i) {
        std::printf("  %s\n", lines[i].c_str());
    }
    for (const auto& box : world.leftovers()) {
        std::printf("%s\n", box.c_str());
    }
    return 1;
}

/// What all rounds came to.
struct Lived {
    int rounds = 0;
    std::unique_ptr<Holdings> first;  ///< after the second round
    std::vector<double> late;         ///< of keys in the storm, in milliseconds
};

/// Tells it; true when the daemon holds no more than it did, and keys were on time.
bool tell(const Lived& lived, const rig::World& world, const Holdings& last, const Person& person,
          const Judge& judge) {
    std::printf("%d rounds, %llu things done, %llu reports; nothing stayed down, nothing was lost",
                lived.rounds, static_cast<unsigned long long>(person.acts()),
                static_cast<unsigned long long>(judge.reports()));
    bool well = world.accident().empty();
    if (lived.first) {
        const Holdings& first = *lived.first;
        std::printf("; memory %ld to %ld KiB, threads %d to %d, descriptors %d to %d", first.memory,
                    last.memory, first.threads, last.threads, first.descriptors, last.descriptors);
        well = well && last.threads <= first.threads && last.descriptors <= first.descriptors &&
               (kSanitized || last.memory <= first.memory + 512);
    }
    if (!lived.late.empty()) {
        const double p99 = rig::percentile(lived.late, 0.99);
        std::printf("; %zu keys in the storm: median %.2f ms, p99 %.2f ms, latest %.2f ms",
                    lived.late.size(), rig::percentile(lived.late, 0.5), p99,
                    rig::percentile(lived.late, 1));
        well = well && p99 < 5;
    }
    std::puts("");
    return well;
}

int live(const Wanted& wanted) {
    Judge judge;
    rig::World world(life::plan(wanted.person.releaseEverything),
                     [&judge](const std::string& name, const rig::Report& report) {
                         if (name.starts_with("box ")) {
                             judge.take(name + ":" + std::to_string(report.at.port), report.bytes,
                                        report.when);
                         }
                     });
    if (const auto problem = world.start()) {
        std::printf("%s\n", problem->c_str());
        return 1;
    }
    Person person(world, judge, wanted.person);
    const auto end = Clock::now() + std::chrono::duration<double>(wanted.seconds);
    Lived lived;
    do {
        if (wanted.storm) {
            storm(world, person, wanted.person.seed + static_cast<unsigned>(lived.rounds));
        }
        for (int i = 0; i < wanted.acts; ++i) {
            person.act();
        }
        if (const std::string problem = person.settle(); !problem.empty()) {
            return fail(world, person,
                        "seed " + std::to_string(wanted.person.seed) + ", round " +
                            std::to_string(lived.rounds) + ": " + problem);
        }
        if (wanted.storm) {
            const auto now = keysInAStorm(world, judge);
            lived.late.insert(lived.late.end(), now.begin(), now.end());
        }
        if (++lived.rounds == 2) {
            lived.first = std::make_unique<Holdings>(world.daemon());
        }
    } while (Clock::now() < end);
    return tell(lived, world, Holdings(world.daemon()), person, judge) ? 0 : 1;
}

int run(int argc, char** argv) {
    CLI::App app("One console, and a person who does anything at all.");
    Wanted wanted;
    app.add_option("--seconds", wanted.seconds, "For so long")->capture_default_str();
    app.add_option("--seed", wanted.person.seed, "Of what is done")->capture_default_str();
    app.add_option("--pause", wanted.milliseconds, "Longest pause between two things, in ms")
        ->capture_default_str();
    app.add_option("--acts", wanted.acts, "Things done before it is looked at")
        ->capture_default_str();
    app.add_flag("--release-everything", wanted.person.releaseEverything, "The daemon's option");
    app.add_flag("--faults", wanted.person.faults, "Boxes fall silent, datagrams are junk");
    app.add_flag("--storm", wanted.storm,
                 "A mouse of 8 kHz, 2,000 orders and a plug a second beside it");
    CLI11_PARSE(app, argc, argv);
    wanted.person.longest = Milliseconds(wanted.milliseconds);
    if (!rig::enterOwnNetwork()) {
        std::puts("tavrik-life: needs a network of its own");
        return 1;
    }
    return live(wanted);
}

}  // namespace

int main(int argc, char** argv) { return rig::runTool("tavrik-life", run, argc, argv); }
