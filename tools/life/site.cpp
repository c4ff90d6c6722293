// tavrik-site: up to 24 consoles, each in a network of its own, 400 boxes, and one management side
// that arranges them anew by multicast while everybody types and crosses.
#include <arpa/inet.h>
#include <linux/input-event-codes.h>
#include <poll.h>
#include <sched.h>
#include <sys/socket.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <latch>
#include <memory>
#include <numeric>
#include <random>
#include <stdexcept>
#include <thread>
#include <vector>

#include "life/judge.h"
#include "rig/isolation.h"
#include "rig/tool.h"
#include "rig/world.h"

namespace {

using life::Clock;
using life::Judge;
using life::Milliseconds;

constexpr int kScreens = 25, kColumns = 4, kRows = 4;
constexpr int kBoxes = kScreens * kColumns * kRows;
constexpr Milliseconds kPatience{30000};
constexpr const char* kBridge = "10.9.0.254";

/// A console's own address, which is that of its screen.
std::string screenAddress(int screen) { return "10.9.0." + std::to_string(101 + screen); }

std::string boxAddress(int screen, int cell) {
    return "10.9." + std::to_string(128 + screen) + "." + std::to_string(101 + cell);
}

/// The screens of the wall in rows of so many.
std::string relation(int inARow) {
    std::string text = "relation&";
    for (int screen = 0; screen < kScreens; ++screen) {
        text += (screen == 0 ? "" : "#") + std::to_string(screen % inARow) + "," +
                std::to_string(screen / inARow) + "," + screenAddress(screen);
    }
    return text;
}

std::string cells(int screen) {
    std::string text = screenAddress(screen);
    for (int cell = 0; cell < kColumns * kRows; ++cell) {
        text += "#" + std::to_string(cell % kColumns) + "," + std::to_string(cell / kColumns) +
                "," + boxAddress(screen, cell);
    }
    return text;
}

void mustRun(const std::string& command) {
    if (std::system(command.c_str()) != 0) {
        throw std::runtime_error("failed: " + command);
    }
}

/// All boxes, each with a socket of its own, served by one thread. They answer every query.
class Boxes {
 public:
    explicit Boxes(Judge& judge) : judge_(judge) {
        for (int box = 0; box < kBoxes; ++box) {
            const std::string ip = boxAddress(box / (kColumns * kRows), box % (kColumns * kRows));
            const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
            const sockaddr_in address = rig::socketAddress({ip, wire::kQueryPort});
            if (bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
                throw std::runtime_error("no box can be at " + ip);
            }
            waits_.push_back({fd, POLLIN, 0});
            names_.push_back(" to " + ip);
        }
        thread_ = std::jthread([this](const std::stop_token& stop) { serve(stop); });
    }

 private:
    void serve(const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            poll(waits_.data(), waits_.size(), 100);
            for (std::size_t i = 0; i < waits_.size(); ++i) {
                while (waits_[i].revents != 0 && receive(i)) {
                }
            }
        }
    }

    bool receive(std::size_t box) {
        constexpr std::string_view kAnswer = rig::kUsualAnswer;
        std::array<std::uint8_t, 256> bytes{};
        sockaddr_in from{};
        socklen_t size = sizeof from;
        auto* const sender = reinterpret_cast<sockaddr*>(&from);
        const ssize_t got =
            recvfrom(waits_[box].fd, bytes.data(), bytes.size(), MSG_DONTWAIT, sender, &size);
        if (got < 0) {
            return false;
        }
        const auto count = static_cast<std::size_t>(got);
        if (count == 4 && bytes[0] == 'l') {
            sendto(waits_[box].fd, kAnswer.data(), kAnswer.size(), 0, sender, size);
        } else {
            judge_.take(inet_ntoa(from.sin_addr) + names_[box], {bytes.data(), count},
                        Clock::now());
        }
        return true;
    }

    Judge& judge_;
    std::vector<pollfd> waits_;
    std::vector<std::string> names_;
    std::jthread thread_;
};

/// The bridge that joins the consoles, in this process's network; the boxes' addresses are there.
void makeBridge() {
    mustRun(
        "ip link add br0 address 02:00:00:00:00:01 type bridge mcast_snooping 0 && ip addr add " +
        std::string(kBridge) +
        "/17 dev br0 && ip link set br0 up && ip route add local 10.9.128.0/17 dev lo");
}

/// A daemon in a network of its own, and somebody who types and moves there. Its thread lives as
/// long as the daemon, which ends with the thread that started it.
class Seat {
 public:
    struct Typed {
        std::uint8_t usage;
        Clock::time_point when;
    };

    Seat(int number, std::atomic<bool>& busy) : number_(number), busy_(busy) {
        thread_ = std::thread([this] { live(); });
        ready_.wait();
    }
    ~Seat() {
        over_ = true;
        thread_.join();
    }
    const rig::Daemon& daemon() const { return *daemon_; }
    std::string name() const { return screenAddress(number_); }
    const std::string& problem() const { return problem_; }
    bool waitFor(std::string_view end, Milliseconds limit) {
        return daemon_
            ->waitForLine([end](std::string_view line) { return line.ends_with(end); }, limit)
            .has_value();
    }
    void skipLines() { daemon_->skipLines(); }
    bool rests() const { return resting_; }
    const std::vector<Typed>& typed() const { return typed_; }
    void forgetTyped() { typed_.clear(); }

 private:
    void live() {
        try {
            enterNetwork();
            board_.setLocalAddress(name());
            board_.plugKeyboard(0);
            board_.plugMouse(1);
            daemon_ = std::make_unique<rig::Daemon>(board_.root(), board_.work());
        } catch (const std::exception& problem) {
            problem_ = problem.what();
        }
        ready_.count_down();
        while (!over_ && daemon_) {
            resting_ = !busy_;
            if (resting_) {
                std::this_thread::sleep_for(Milliseconds(5));
            } else {
                typeAndMove();
            }
        }
        daemon_.reset();
    }

    /// A cable from here to the bridge, as eth0.
    void enterNetwork() {
        const std::string far = "ve" + std::to_string(number_);
        if (unshare(CLONE_NEWNET) != 0) {
            throw std::runtime_error("no network of its own");
        }
        mustRun(
            "ip link set lo up && ip link add eth0 type veth peer name " + far + " netns " +
            std::to_string(getpid()) + " && ip addr add " + name() +
            "/17 dev eth0 && ip link set eth0 up && ip route add 10.9.128.0/17 via 10.9.0.254 && ip route add 224.0.0.0/4 dev eth0");
    }

    /// A key, then as much motion as a mouse of 125 Hz makes until the next one. Eight keys a
    /// second.
    void typeAndMove() {
        static constexpr std::array<std::uint16_t, 26> kLetters{
            KEY_A, KEY_B, KEY_C, KEY_D, KEY_E, KEY_F, KEY_G, KEY_H, KEY_I,
            KEY_J, KEY_K, KEY_L, KEY_M, KEY_N, KEY_O, KEY_P, KEY_Q, KEY_R,
            KEY_S, KEY_T, KEY_U, KEY_V, KEY_W, KEY_X, KEY_Y, KEY_Z};
        constexpr std::uint8_t kFirstUsage = 0x04;  // of A; the others follow it
        const std::size_t letter = typed_.size() % kLetters.size();
        typed_.push_back({static_cast<std::uint8_t>(kFirstUsage + letter), Clock::now()});
        board_.key(0, kLetters[letter], true);
        std::this_thread::sleep_for(Milliseconds(5));
        board_.key(0, kLetters[letter], false);
        for (int i = 0; i < 15; ++i) {
            if (i == 0 && random_() % 8 == 0) {
                direction_ = -direction_;
            }
            board_.move(1, direction_ * static_cast<int>(random_() % 60), i % 2 == 0 ? 3 : -3);
            std::this_thread::sleep_for(Milliseconds(8));
        }
    }

    int number_;
    std::atomic<bool>& busy_;
    rig::Board board_;
    std::unique_ptr<rig::Daemon> daemon_;
    std::string problem_;
    std::latch ready_{1};
    std::atomic<bool> over_{false}, resting_{true};
    std::vector<Typed> typed_;  ///< its thread's, or anybody's while it rests
    std::mt19937 random_{static_cast<unsigned>(number_)};
    int direction_ = 1;
    std::thread thread_;
};

/// Everybody hears it.
void arrangeAll(const rig::Box& management, int inARow) {
    const rig::Endpoint group{"224.168.1.1", 41236};
    management.send(group, relation(inARow));
    for (int screen = 0; screen < kScreens; ++screen) {
        management.send(group, "details&" + cells(screen));
    }
}

struct Figures {
    std::size_t typed = 0, lost = 0, doubled = 0;
    std::size_t nowhere = 0;   ///< typed while a new arrangement came, which begins without cells
    std::vector<double> late;  ///< milliseconds from a key to its report
};

struct Span {
    Clock::time_point from, to;
};

/// Each key that was typed belongs to the next press of its kind, before the same letter is typed
/// again.
void compare(const std::vector<Seat::Typed>& typed, const std::vector<life::Press>& came,
             const std::vector<Span>& arranged, Figures& figures) {
    static constexpr Milliseconds kPauses{100};  // of the rules, before a key is served
    const auto meetsAnArrangement = [&arranged](Clock::time_point when) {
        return std::ranges::any_of(arranged, [when](const Span& span) {
            return when + kPauses > span.from && when < span.to;
        });
    };
    auto press = came.begin();
    for (const Seat::Typed& key : typed) {
        ++figures.typed;
        while (press != came.end() && press->when < key.when) {
            ++figures.doubled;
            ++press;
        }
        if (press != came.end() && press->usage == key.usage &&
            press->when < key.when + std::chrono::seconds(3)) {
            figures.late.push_back(
                std::chrono::duration<double, std::milli>(press->when - key.when).count());
            ++press;
        } else {
            ++(meetsAnArrangement(key.when) ? figures.nowhere : figures.lost);
        }
    }
    figures.doubled += static_cast<std::size_t>(came.end() - press);
}

/// What so many consoles cost.
struct Step {
    std::size_t consoles;
    double processor;  ///< of all of them, in percent of one processor
    long memory;       ///< of the largest, in KiB
    double follow;     ///< milliseconds until the last one has the whole wall, the median
};

/// A line for each step; bars as long as the greatest value needs.
void plot(const char* what, const std::vector<Step>& steps, double (*value)(const Step&)) {
    constexpr double kLongest = 60;
    double most = 0;
    for (const Step& step : steps) {
        most = std::max(most, value(step));
    }
    std::printf("\n%s\n", what);
    for (const Step& step : steps) {
        const auto length = static_cast<std::size_t>(std::lround(value(step) / most * kLongest));
        std::printf("%3zu |%s %.1f\n", step.consoles, std::string(length, '#').c_str(),
                    value(step));
    }
}

class Site {
 public:
    Site() : boxes_((makeBridge(), judge_)) {}

    /// So many consoles are there and serve.
    void grow(int consoles) {
        const auto before = seats_.size();
        while (seats_.size() < static_cast<std::size_t>(consoles)) {
            const int number = static_cast<int>(seats_.size());
            seats_.push_back(std::make_unique<Seat>(number, busy_));
            if (!seats_.back()->problem().empty()) {
                throw std::runtime_error(seats_.back()->problem());
            }
            mustRun("ip link set ve" + std::to_string(number) + " master br0 up");
        }
        for (std::size_t i = before; i < seats_.size(); ++i) {
            if (!seats_[i]->waitFor("======>start listenInput<======", kPatience)) {
                throw std::runtime_error("console " + std::to_string(i) + " does not listen");
            }
        }
        std::this_thread::sleep_for(Milliseconds(6000));  // the group is joined by then
    }

    /// What the steps so far came to.
    void plotSteps() const {
        plot("processor of all consoles, in percent of one", steps_,
             [](const Step& step) { return step.processor; });
        plot("memory of all consoles, in MB", steps_, [](const Step& step) {
            return static_cast<double>(step.memory) / 1024 * static_cast<double>(step.consoles);
        });
        plot("the last console has the whole wall after so many ms", steps_,
             [](const Step& step) { return step.follow; });
    }

    /// Everybody is busy for so long, and is arranged anew again and again. True when every key
    /// arrived once and nothing is down.
    bool live(double seconds) {
        arrange();
        settle();
        std::vector<double> before;
        for (const auto& seat : seats_) {
            before.push_back(seat->daemon().cpuSeconds());
            seat->forgetTyped();
        }
        judge_.forgetPresses();
        const std::uint64_t reports = judge_.reports();
        const auto start = Clock::now();
        const auto lasted = [start] {
            return std::chrono::duration<double>(Clock::now() - start).count();
        };
        busy_ = true;
        std::vector<double> follow;
        while (lasted() < seconds) {
            std::this_thread::sleep_for(Milliseconds(4000));
            follow.push_back(arrange());
        }
        const double time = lasted();
        std::vector<double> cpu;
        for (std::size_t i = 0; i < seats_.size(); ++i) {
            cpu.push_back((seats_[i]->daemon().cpuSeconds() - before[i]) / time * 100);
        }
        settle();
        return judge(time, judge_.reports() - reports, cpu, follow);
    }

 private:
    /// Milliseconds until the last console has taken the whole arrangement.
    double arrange() {
        for (const auto& seat : seats_) {
            seat->skipLines();
        }
        const std::string last = "osdGetIp:" + screenAddress(kScreens - 1);
        const auto start = Clock::now();
        inARow_ = inARow_ == kScreens ? 5 : kScreens;  // a "relation" that repeats itself is none
        arrangeAll(management_, inARow_);
        for (const auto& seat : seats_) {
            if (!seat->waitFor(last, kPatience)) {
                throw std::runtime_error(seat->name() + " does not follow");
            }
        }
        arranged_.push_back({start, Clock::now()});
        return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    }

    void settle() {
        busy_ = false;
        while (!std::ranges::all_of(seats_, [](const auto& seat) { return seat->rests(); })) {
            std::this_thread::sleep_for(Milliseconds(5));
        }
        judge_.waitForQuiet(Milliseconds(300), kPatience);
    }

    bool judge(double time, std::uint64_t reports, const std::vector<double>& cpu,
               const std::vector<double>& follow) {
        const auto came = judge_.presses(0, Milliseconds(0));
        Figures figures;
        long memory = 0;
        for (const auto& seat : seats_) {
            std::vector<life::Press> its;
            std::ranges::copy_if(came, std::back_inserter(its), [&](const life::Press& press) {
                return press.place.starts_with(seat->name() + " ");
            });
            memory = std::max(memory, seat->daemon().peakMemoryKiB());
            compare(seat->typed(), its, arranged_, figures);
        }
        // Whoever loses control by an arrangement is told the keys' state once more.
        const std::uint64_t allowed = follow.size() * seats_.size();
        figures.doubled += judge_.repeated() > allowed ? judge_.repeated() - allowed : 0;
        const std::string down = judge_.down();
        std::printf(
            "%2zu consoles, %3.0f s: %7.0f reports a second; %zu keys, %zu lost, %zu doubled, %zu typed while there was no cell, p50 %.2f ms, "
            "p99 %.2f ms; processor %.2f %% each (most %.2f), memory %ld KiB; followed within "
            "%.0f ms (longest %.0f)\n%s",
            seats_.size(), time, static_cast<double>(reports) / time, figures.typed, figures.lost,
            figures.doubled, figures.nowhere, rig::percentile(figures.late, 0.5),
            rig::percentile(figures.late, 0.99), rig::percentile(cpu, 0.5), rig::percentile(cpu, 1),
            memory, rig::percentile(follow, 0.5), rig::percentile(follow, 1), down.c_str());
        steps_.push_back({seats_.size(), std::accumulate(cpu.begin(), cpu.end(), 0.0), memory,
                          rig::percentile(follow, 0.5)});
        return figures.lost + figures.doubled == 0 && down.empty() && figures.typed > 0;
    }

    Judge judge_;
    Boxes boxes_;
    const rig::Box management_{{{kBridge, 0}}};
    std::atomic<bool> busy_{false};
    std::vector<std::unique_ptr<Seat>> seats_;
    int inARow_ = kScreens;
    std::vector<Span> arranged_;
    std::vector<Step> steps_;
};

int run(int argc, char** argv) {
    CLI::App app("A whole site on one machine; as root.");
    double seconds = 300, step = 15;
    std::vector<int> consoles{1, 6, 12, 18, 24};
    app.add_option("--seconds", seconds, "How long all consoles are busy")->capture_default_str();
    app.add_option("--step", step, "How long fewer of them are")->capture_default_str();
    app.add_option("--consoles", consoles, "How many there are, one number a step")
        ->capture_default_str();
    CLI11_PARSE(app, argc, argv);
    if (!rig::enterOwnNetwork()) {
        std::puts("tavrik-site: needs a network of its own");
        return 1;
    }
    Site site;
    bool well = true;
    for (const int count : consoles) {
        site.grow(count);
        well = site.live(count == consoles.back() ? seconds : step) && well;
    }
    site.plotSteps();
    std::printf("%s\n", well ? "every key arrived once, nothing stayed down" : "not well");
    return well ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    setenv("TMPDIR", "/dev/shm", 0);  // each board has a flash of its own, not one disk for all
    return rig::runTool("tavrik-site", run, argc, argv);
}
