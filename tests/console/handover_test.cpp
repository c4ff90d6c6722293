#include <linux/input-event-codes.h>
#include <sys/wait.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <thread>

#include "console.h"

/// What the timing of threads decides: a report that is on its way while control passes on, an
/// answer that comes at once, the end of the process.

namespace {

using rig::Milliseconds;
using Clock = std::chrono::steady_clock;

constexpr std::uint16_t kCommandPort = 41236;

class Timing : public Console {
 protected:
    /// Starts the daemon with the library that holds calls up.
    void start(const rig::Daemon::Observer& lines = {}) {
        const char* const options = std::getenv("ASAN_OPTIONS");
        const std::string kept = options != nullptr ? std::string(options) + ":" : "";
        setenv("ASAN_OPTIONS", (kept + "verify_asan_link_order=0").c_str(), 1);
        setenv("HELD_CALLS", (board().root() / "held").c_str(), 1);
        setenv("LD_PRELOAD", CONSOLE_PRELOAD, 1);
        if (const auto problem = world().start(lines)) {
            FAIL() << *problem;
        }
    }
    ~Timing() override {
        unsetenv("LD_PRELOAD");
        unsetenv("HELD_CALLS");
    }

    void send(std::string_view command) {
        world().control().send({"127.0.0.1", kCommandPort}, command);
    }

    void addPort(const char* address, std::uint16_t port, const char* answer = nullptr) {
        rig::PlannedBox& box = plan.boxes.emplace_back();
        box.at.address = address;
        box.at.port = port;
        if (answer != nullptr) {
            box.answer = answer;
        }
    }

    /// The next such call takes `milliseconds` longer.
    void hold(const std::string& what, int milliseconds) {
        board().write("held.next", what + " " + std::to_string(milliseconds));
        std::filesystem::rename(board().root() / "held.next", board().root() / "held");
    }
    bool isHeld() { return !std::filesystem::exists(board().root() / "held"); }
    void awaitHeld() {
        for (int tries = 0; tries < 300 && !isHeld(); ++tries) {
            std::this_thread::sleep_for(Milliseconds{10});
        }
        ASSERT_TRUE(isHeld()) << "the call never came";
    }

    /// The first key after a start reads the lights; it is none of these tests' matter.
    void pressFirstKey() {
        board().key(kKeyboard, KEY_Z, true);
        board().key(kKeyboard, KEY_Z, false);
        expectReport(kFirstBox, "key down Z");
        expectReport(kFirstBox, "keys up");
    }

    std::vector<std::string> reportsAt(const std::string& address) {
        std::vector<std::string> texts;
        while (const auto report = box(address).next(Milliseconds{200})) {
            texts.push_back(report->text);
        }
        return texts;
    }
};

std::string nameOfTaker(const testing::TestParamInfo<const char*>& row) {
    constexpr const char* kNames[] = {"AnotherBox", "AnotherPort", "Nobody",
                                      "APlace",     "TheOsd",      "TheEnd"};
    return kNames[row.index];
}

class Overtaken : public Timing, public testing::WithParamInterface<const char*> {};

}  // namespace

TEST_P(Overtaken, AKeyOnItsWayIsLetGoOfBehindTheHandover) {
    addPort("127.0.0.31", 8090);
    start();
    pressFirstKey();
    hold("press", 150);
    board().key(kKeyboard, KEY_A, true);
    awaitHeld();
    const std::string command = GetParam();
    if (command == "SIGTERM") {
        daemon().signal(SIGTERM);
        endsByDesign = true;
    } else {
        send(command);
    }
    const auto texts = reportsAt(kFirstBox);
    EXPECT_THAT(texts, ::testing::Contains("key down A"));
    ASSERT_FALSE(texts.empty());
    EXPECT_THAT((std::vector<std::string>(std::find(texts.begin(), texts.end(), "key down A"),
                                          texts.end())),
                ::testing::Contains("keys up"))
        << ::testing::PrintToString(texts);
}

INSTANTIATE_TEST_SUITE_P(By, Overtaken,
                         testing::Values("details&127.0.0.20#0,0,127.0.0.32-8000",
                                         "details&127.0.0.20#0,0,127.0.0.31-8000,90",
                                         "relation&0,0,0", "MTO:1,0", "OSDSTART", "SIGTERM"),
                         nameOfTaker);

TEST_F(Timing, AnAnswerThatComesAtOnceEndsTheMode) {
    plan.osd = false;
    start();
    pressFirstKey();
    struct Row {
        std::uint16_t key;
        const char* notice;
        const char* answer;
    };
    for (const Row& row :
         {Row{KEY_LEFTCTRL, "OSDSTART", "OSDQUIT"}, Row{KEY_LEFTALT, "PREVIEWSTART", "PREVIEWQUIT"},
          Row{KEY_LEFTSHIFT, "KVMSTART", "KVMQUIT"}}) {
        hold("notice", 100);
        for (int tap = 0; tap < 3; ++tap) {
            board().key(kKeyboard, row.key, true);
            board().key(kKeyboard, row.key, false);
        }
        expectOsd(41237, row.notice);
        send(row.answer);
        std::this_thread::sleep_for(Milliseconds{200});
        world().clear();
        board().key(kKeyboard, KEY_A, true);
        board().key(kKeyboard, KEY_A, false);
        expectReport(kFirstBox, "key down A");
        expectReport(kFirstBox, "keys up");
    }
}

TEST_F(Timing, AKeyThatWasDownBeforeARestartCountsNothingAfterIt) {
    constexpr const char* kListening = "======>start listenInput<======";
    constexpr Milliseconds kRestart{6000};
    start();
    pressFirstKey();
    board().key(kKeyboard, KEY_LEFTALT, true);
    expectReport(kFirstBox, "modifiers LEFTALT");
    daemon().skipLines();
    board().plugMouse(2);
    ASSERT_TRUE(daemon().waitForLine(kListening, kRestart));
    expectReport(kFirstBox, "keys up");
    expectReport(kFirstBox, "lights caps off num off");
    board().key(kKeyboard, KEY_A, true);
    expectReport(kFirstBox, "key down A");
    board().key(kKeyboard, KEY_LEFTALT, false);
    expectReport(kFirstBox, "key down A");
    board().unplug(kKeyboard);
    ASSERT_TRUE(daemon().waitForLine(kListening, kRestart));
    expectReport(kFirstBox, "keys up");
}

namespace {

/// What the process is busy with when its end comes.
struct Busy {
    const char* name;
    const char* held;  ///< the call that is held up
    int resyncing;     ///< milliseconds since a resync began: 50 of lights, then 20 of a query
    bool deafReader;   ///< nobody reads the log
};

class TheEnd : public Timing, public testing::WithParamInterface<std::tuple<int, Busy>> {
 protected:
    /// Waits until the process has ended; the signal that ended it, 0 when none did.
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

}  // namespace

namespace {

std::string nameOfEnd(const testing::TestParamInfo<std::tuple<int, Busy>>& row) {
    const int number = std::get<0>(row.param);
    const std::string signal = number == SIGTERM ? "Term" : number == SIGINT ? "Int" : "Hup";
    return signal + "During" + std::get<1>(row.param).name;
}

}  // namespace

TEST_P(TheEnd, LetsGoOfWhatIsDown) {
    const auto& [number, busy] = GetParam();
    std::atomic<bool> deaf{false};
    start([&deaf](std::string_view) {
        while (deaf) {
            std::this_thread::sleep_for(Milliseconds{5});
        }
    });
    pressFirstKey();
    board().emit(kMouse, EV_KEY, BTN_LEFT, 1);
    expectReport(kFirstBox, "pointer 0,0 buttons left");
    board().key(kKeyboard, KEY_A, true);
    expectReport(kFirstBox, "key down A");
    if (busy.held[0] != '\0') {
        hold(busy.held, 2000);
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
    endsByDesign = true;
    daemon().signal(number);
    EXPECT_EQ(endedBy(Milliseconds{2000}), number);
    EXPECT_LE(Clock::now() - killed, Milliseconds{300});
    deaf = false;
    bool keys = false;
    bool buttons = false;
    while (const auto report = box(kFirstBox).next(Milliseconds{50})) {
        keys = keys || report->text == "keys up";
        buttons = buttons || report->text == "pointer 0,0 buttons none";
        EXPECT_LE(report->when - killed, Milliseconds{100});
    }
    EXPECT_TRUE(buttons) << "no button up";
    EXPECT_TRUE(keys) << "no keys up";
}

INSTANTIATE_TEST_SUITE_P(
    By, TheEnd,
    testing::Combine(testing::Values(SIGTERM, SIGINT, SIGHUP),
                     testing::Values(Busy{"Nothing", "", 0, false}, Busy{"ASave", "save", 0, false},
                                     Busy{"APause", "", 20, false}, Busy{"AQuery", "", 55, false},
                                     Busy{"ADeafReader", "", 0, true})),
    nameOfEnd);
