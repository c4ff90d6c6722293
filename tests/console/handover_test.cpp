#include <linux/input-event-codes.h>
#include <sys/wait.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <set>
#include <thread>

#include "console.h"

/// What the timing of threads decides: a report that is on its way while control passes on, and the
/// end of the process.

namespace {

using rig::Milliseconds;
using Clock = std::chrono::steady_clock;

class Timing : public Console {
 protected:
    /// Starts the daemon with the library that holds calls up, and presses the first key, which
    /// reads the lights: none of these tests' matter.
    void start(const rig::Daemon::Observer& lines = {}) {
        const char* const options = std::getenv("ASAN_OPTIONS");
        const std::string kept = options != nullptr ? std::string(options) + ":" : "";
        setenv("ASAN_OPTIONS", (kept + "verify_asan_link_order=0").c_str(), 1);
        setenv("HELD_CALLS", (board().root() / "held").c_str(), 1);
        setenv("LD_PRELOAD", CONSOLE_PRELOAD, 1);
        endsByDesign = true;
        ASSERT_EQ(world().start(lines), std::nullopt);
        board().key(kKeyboard, KEY_Z, true);
        board().key(kKeyboard, KEY_Z, false);
        expectReport(kFirstBox, "key down Z");
        expectReport(kFirstBox, "keys up");
    }
    ~Timing() override {
        unsetenv("LD_PRELOAD");
        unsetenv("HELD_CALLS");
    }

    /// The next such call takes `number` milliseconds longer, or `times` of them fail with that
    /// errno.
    void hold(const std::string& what, int number, int times = 0) {
        board().write("held.next",
                      what + " " + std::to_string(number) + " " + std::to_string(times));
        std::filesystem::rename(board().root() / "held.next", board().root() / "held");
    }
    void awaitHeld() {
        for (int tries = 0; std::filesystem::exists(board().root() / "held"); ++tries) {
            ASSERT_LT(tries, 600) << "the call never came";
            std::this_thread::sleep_for(Milliseconds{10});
        }
    }

    /// Presses a key and moves the mouse again and again, for a restart may be under way, until
    /// both reach a box.
    bool serves() {
        const auto end = Clock::now() + Milliseconds{8000};
        bool key = false, pointer = false;
        while (Clock::now() < end && !(key && pointer)) {
            world().clear();
            board().key(kKeyboard, KEY_B, true);
            board().key(kKeyboard, KEY_B, false);
            board().move(kMouse, 1, 1);
            std::this_thread::sleep_for(Milliseconds{100});
            for (const std::string& report : world().leftovers()) {
                key = key || report.ends_with("key down B");
                pointer = pointer || report.find("pointer ") != report.npos;
            }
        }
        return key && pointer;
    }

    /// The signal that ended the process within `limit`; 0 when none did.
    int endedBy(Milliseconds limit) {
        const auto end = Clock::now() + limit;
        siginfo_t info{};
        while (info.si_pid == 0 && Clock::now() < end) {
            waitid(P_PID, static_cast<id_t>(daemon().pid()), &info, WEXITED | WNOHANG | WNOWAIT);
            std::this_thread::sleep_for(Milliseconds{1});
        }
        return info.si_pid != 0 && info.si_code != CLD_EXITED ? info.si_status : 0;
    }
};

/// What the process is busy with when its end comes.
struct Busy {
    const char* name;
    int signal;
    bool saving = false;
    int resyncing = 0;        ///< ms since a resync began: 50 of lights, then 20 of a query
    bool deafReader = false;  ///< nobody reads the log

    friend void PrintTo(const Busy& busy, std::ostream* out) { *out << busy.name; }
};

/// Calls that fail, each with these errors in turn; see preload/held_calls.cpp.
struct Failing {
    const char* call;
    std::vector<int> errors;
    int times = 5;

    friend void PrintTo(const Failing& failing, std::ostream* out) { *out << failing.call; }
};

class FailingCall : public Timing, public testing::WithParamInterface<Failing> {};

class TheEnd : public Timing, public testing::WithParamInterface<Busy> {};

}  // namespace

TEST_F(Timing, AKeyOnItsWayIsLetGoOfBehindTheHandoverAndAtTheEnd) {
    start();
    for (const auto& [taker, loser] :
         {std::pair{"details&127.0.0.20#0,0,127.0.0.32-8000", kFirstBox},
          {"SIGTERM", "127.0.0.32"}}) {
        hold("press", 150);
        board().key(kKeyboard, KEY_A, true);
        awaitHeld();
        if (loser == kFirstBox) {
            send(taker);
        } else {
            daemon().signal(SIGTERM);
        }
        std::vector<std::string> texts;
        while (const auto report = box(loser).next(Milliseconds{200})) {
            texts.push_back(report->text);
        }
        const auto down = std::find(texts.begin(), texts.end(), "key down A");
        EXPECT_NE(std::find(down, texts.end(), "keys up"), texts.end())
            << taker << ": " << ::testing::PrintToString(texts);
    }
}

/// A call fails some times, with whatever the console is busy: no flood of lines, no end, and
/// afterwards it serves as before.
TEST_P(FailingCall, NeitherEndsNorSilencesTheConsole) {
    constexpr const char* kCells[] = {"details&127.0.0.20#0,0,127.0.0.31-8000",
                                      "details&127.0.0.20#0,0,127.0.0.31-8000#1,0,127.0.0.32-8000",
                                      "details&127.0.0.20#0,0,127.0.0.31-8000#0,1,127.0.0.32-8000"};
    start();
    std::size_t round = 0;
    for (const int error : GetParam().errors) {
        SCOPED_TRACE(std::strerror(error));
        const std::size_t lines = daemon().lines().size();
        hold(GetParam().call, error, GetParam().times);
        send(kCells[round % std::size(kCells)]);
        round++ % 2 == 0 ? board().plugMouse(5) : board().unplug(5);
        for (int i = 0; i < 5; ++i) {
            board().key(kKeyboard, KEY_X, i % 2 == 0);
            board().move(kMouse, 5, 5);
            std::this_thread::sleep_for(Milliseconds{20});
        }
        awaitHeld();
        EXPECT_TRUE(serves());
        EXPECT_TRUE(daemon().running());
        EXPECT_LT(daemon().lines().size() - lines, 1500U);
    }
}
INSTANTIATE_TEST_SUITE_P(
    Each, FailingCall,
    testing::Values(Failing{"sendto", {ENOBUFS, ENETUNREACH, EPERM, EINTR}},
                    Failing{"recvfrom", {ENOMEM, EINTR, ECONNREFUSED}},
                    Failing{"poll", {EINTR, ENOMEM}}, Failing{"select", {EINTR, ENOMEM}},
                    Failing{"open", {EMFILE, EINTR}}, Failing{"read", {EINTR, EIO}},
                    Failing{"node", {EMFILE, EACCES}}, Failing{"probe", {EIO}, 1},
                    Failing{"ioctl", {EINTR, ENODEV}}, Failing{"fsync", {EIO}},
                    Failing{"rename", {EROFS}}, Failing{"thread", {EAGAIN}}),
    [](const auto& row) { return std::string(row.param.call); });

TEST_F(Timing, TypingGoesOnWhileAPlugsSettingsAreSaved) {
    start();
    std::filesystem::remove(board().settingsFile());  // so that there is something to save
    constexpr Milliseconds kFlush{3000};
    hold("save", kFlush.count());
    board().plugMouse(2);
    awaitHeld();
    const auto pressed = Clock::now();
    board().key(kKeyboard, KEY_A, true);
    const auto report = box(kFirstBox).next(Milliseconds{2000});
    ASSERT_TRUE(report);
    EXPECT_EQ(report->text, "key down A");
    EXPECT_LT(report->when - pressed, Milliseconds{400});
    // Once the old listener is stopped.
    EXPECT_TRUE(daemon().waitForLine("close all keyboard input device", kFlush + kLimit));
    expectReport(kFirstBox, "keys up");
    expectReport(kFirstBox, "lights caps off num off");
}

TEST_F(Timing, ADatagramThatCannotLeaveCostsNothingElse) {
    start();
    for (const int error : {ENOBUFS, ENETUNREACH, EPERM, ENOMEM, EINTR}) {
        hold("deny", error);
        for (const std::uint16_t code : {std::uint16_t{KEY_A}, std::uint16_t{KEY_B}}) {
            board().key(kKeyboard, code, true);
            board().key(kKeyboard, code, false);
        }
        for (const char* report : {"keys up", "key down B", "keys up"}) {
            expectReport(kFirstBox, report);
        }
    }
    expectLine("cannot send to 127.0.0.31: No buffer space available (1 such datagrams)");
    EXPECT_FALSE(daemon().waitForLine(
        [](std::string_view line) { return line.starts_with("cannot send"); }, Milliseconds{50}))
        << "one line a minute";
}

TEST_P(TheEnd, LetsGoOfWhatIsDown) {
    const Busy& busy = GetParam();
    std::atomic<bool> deaf{false};
    start([&deaf](std::string_view) {
        while (deaf) {
            std::this_thread::sleep_for(Milliseconds{5});
        }
    });
    board().emit(kMouse, EV_KEY, BTN_LEFT, 1);
    expectReport(kFirstBox, "pointer 0,0 buttons left");
    board().key(kKeyboard, KEY_A, true);
    expectReport(kFirstBox, "key down A");
    if (busy.saving) {
        hold("save", 2000);
        send("hotkey&ctrl+f1");
        awaitHeld();
    }
    if (busy.resyncing > 0) {
        box(kFirstBox).setAnswer(std::nullopt);
        send("details&127.0.0.21#0,0,127.0.0.42-8000");
        expectLine("curOutIp:127.0.0.20,osdGetIp:127.0.0.21");
        board().emit(kMouse, EV_REL, REL_X, 0);
        expectLine("osd change signal need locks sync");
        std::this_thread::sleep_for(Milliseconds{busy.resyncing});
    }
    deaf = busy.deafReader;
    for (int i = 0; i < 3000 && busy.deafReader; ++i) {
        board().emit(kKeyboard, EV_KEY, KEY_A, 2);
    }
    box(kFirstBox).clear();
    const auto killed = Clock::now();
    daemon().signal(busy.signal);
    EXPECT_EQ(endedBy(Milliseconds{2000}), busy.signal);
    EXPECT_LE(Clock::now() - killed, Milliseconds{300});
    deaf = false;
    std::set<std::string> texts;
    while (const auto report = box(kFirstBox).next(Milliseconds{50})) {
        texts.insert(report->text);
        EXPECT_LE(report->when - killed, Milliseconds{100});
    }
    EXPECT_THAT(texts, ::testing::IsSupersetOf({"keys up", "pointer 0,0 buttons none"}));
}

INSTANTIATE_TEST_SUITE_P(During, TheEnd,
                         testing::Values(Busy{"Nothing", SIGTERM}, Busy{"ASave", SIGINT, true},
                                         Busy{"APause", SIGHUP, false, 20},
                                         Busy{"AQuery", SIGTERM, false, 55},
                                         Busy{"ADeafReader", SIGINT, false, 0, true}),
                         [](const auto& row) { return row.param.name; });
