#include <linux/input-event-codes.h>

#include <atomic>
#include <random>
#include <thread>

#include "console.h"

/// Everything at once, and anything at all: the console goes on serving.

namespace {

using Clock = std::chrono::steady_clock;
using rig::Milliseconds;

constexpr const char* kWall = "relation&0,0,127.0.0.20#1,0,127.0.0.21#0,1,127.0.0.22";
constexpr const char* kCells =
    "details&127.0.0.20#0,0,127.0.0.31-8000#1,0,127.0.0.32-8000#0,1,127.0.0.41-8000";
constexpr const char* kOtherScreen = "details&127.0.0.21#0,0,127.0.0.42-8000";
constexpr const char* kStatus = "[seq]\n[control]=127.0.0.20\nusb_link_device\nend";

constexpr Milliseconds kPatience{10000};

class Stress : public Console {
 protected:
    Stress() { plan.virtualClock = true; }

    void expectAnswering(const std::string& mark) {
        ASSERT_TRUE(world().worksOff(mark, kPatience)) << "the command channel does not answer";
    }

    /// Back to a known state, whatever happened before; then a key reaches the box. The listener
    /// may just be restarting, so the key is pressed again and again.
    void expectServing() {
        world().setTime({5000, 0});
        expectAnswering("before");
        for (const char* command : {"OSDQUIT", "PREVIEWQUIT", "KVMQUIT", "CONTINUE", kWall, kCells,
                                    "OSDQUIT", "relation&0,0,127.0.0.20", kCells}) {
            send(command);
        }
        expectAnswering("after");
        const auto end = Clock::now() + kPatience;
        for (std::string got; got != "key down A";) {
            ASSERT_LT(Clock::now(), end) << "no key arrives any more";
            if (got.empty()) {
                board().key(kKeyboard, KEY_A, true);
                board().key(kKeyboard, KEY_A, false);
            }
            const auto report = box(kFirstBox).next(Milliseconds{500});
            got = report ? report->text : "";
        }
    }
};

/// Commands in random order, for as long as `busy`.
void sendCommands(rig::World& world, const std::atomic<bool>& busy) {
    constexpr const char* kCommands[] = {"OSDSTART",    "OSDQUIT",
                                         "PREVIEWQUIT", "KVMQUIT",
                                         "PAUSE",       "CONTINUE",
                                         "MTO:0,0",     "MTO:1,0",
                                         "MTO:9,9",     "hotkey&ctrl+f1#alt+2",
                                         "hotkey&",     "relation&0,0,0",
                                         kWall,         kCells,
                                         kOtherScreen,  "relation&0,0,127.0.0.20#0,1,127.0.0.21",
                                         kStatus};
    std::mt19937 random(7);
    while (busy) {
        world.command(kCommands[random() % std::size(kCommands)]);
        std::this_thread::sleep_for(Milliseconds{3});
    }
}

/// Every box changes its mind about its picture and its pointer mode.
void changeAnswers(rig::World& world, const std::atomic<bool>& busy) {
    constexpr const char* kAnswers[] = {rig::kUsualAnswer, "vi_w=800&vi_h=600&kvm=abs",
                                        "vi_w=1280&vi_h=720&kvm=rel"};
    std::mt19937 random(11);
    while (busy) {
        for (const char* address : {"127.0.0.31", "127.0.0.32", "127.0.0.41", "127.0.0.42"}) {
            world.box(address).setAnswer(kAnswers[random() % 3]);
            world.box(address).clear();
        }
        std::this_thread::sleep_for(Milliseconds{20});
    }
}

}  // namespace

TEST_F(Stress, CommandsCrossingsAndQueriesAtOnce) {
    plan.devices.push_back({rig::Kind::kTouch, 2, "ILITEK ILITEK-TP"});
    start();
    world().setTime({1000, 0}, 100);  // a query every 50 ms
    std::atomic<bool> busy{true};
    std::thread commands(sendCommands, std::ref(world()), std::cref(busy));
    std::thread answers(changeAnswers, std::ref(world()), std::cref(busy));
    std::mt19937 random(3);
    const auto upTo = [&random](unsigned limit) { return static_cast<int>(random() % limit); };
    const auto end = Clock::now() + std::chrono::seconds(3);
    int round = 0;
    for (; Clock::now() < end; ++round) {
        board().move(kMouse, upTo(6000) - 3000, upTo(4000) - 2000);
        board().key(kKeyboard,
                    static_cast<std::uint16_t>(upTo(4) == 0 ? KEY_LEFTCTRL : KEY_A + upTo(9)),
                    true);
        board().key(kKeyboard, KEY_A, false);
        board().emit(2, EV_ABS, ABS_X, upTo(16384));
        board().emit(2, EV_SYN, SYN_REPORT, 0);
        std::this_thread::sleep_for(Milliseconds{2});
    }
    busy = false;
    commands.join();
    answers.join();
    box(kFirstBox).setAnswer(rig::kUsualAnswer);
    EXPECT_GT(round, 100);
    expectServing();
}

TEST_F(Stress, AnyDatagramLeavesTheConsoleServing) {
    start();
    std::mt19937 random(5);
    const std::vector<std::string> beginnings{
        "", "relation&", "details&", "hotkey&", "MTO:", "[seq]\n", "PAUSE", "OSD", "#,&:=-"};
    for (std::size_t length = 0; length <= 2048; length += 1 + random() % 7) {
        std::string text = beginnings[random() % beginnings.size()];
        const bool likely = random() % 2 == 0;
        while (text.size() < length) {
            text +=
                likely ? "0123456789.,#&-=:\n"[random() % 18] : static_cast<char>(random() % 256);
        }
        send(text.substr(0, length));
        if (length % 64 == 0) {
            std::this_thread::sleep_for(Milliseconds{5});
        }
    }
    expectServing();
}

/// 2,000 datagrams a second from a stranger at both ports where answers are awaited: each query
/// takes one datagram, so some are lost to the stranger, but no box is for long, and nothing of the
/// stranger's is believed.
TEST_F(Stress, AStrangerDoesNotKeepABoxFromBeingHeard) {
    start();
    std::jthread stranger([](const std::stop_token& over) {
        const rig::Box sender({{"127.0.0.99", 0}});
        for (auto next = Clock::now(); !over.stop_requested(); next += Milliseconds{1}) {
            for (const std::uint16_t port : {std::uint16_t{19357}, std::uint16_t{19358}}) {
                sender.send({"127.0.0.1", port}, "vi_w=77&vi_h=77&kvm=rel");
            }
            std::this_thread::sleep_until(next);
        }
    });
    world().setTime({1000, 0}, 100);  // a query every 50 ms, once the first wait is over
    for (int i = 0; i < 20; ++i) {
        const std::string width = std::to_string(800 + i);
        box(kFirstBox).setAnswer("vi_w=" + width + "&vi_h=600&kvm=abs");
        EXPECT_TRUE(daemon().waitForLine(
            [&width](std::string_view line) {
                return line.starts_with("get vi w=" + width + ",h=600");
            },
            kPatience))
            << width;
    }
    for (const std::string& line : daemon().lines()) {
        EXPECT_EQ(line.find("w=77"), line.npos) << line;
    }
    board().key(kKeyboard, KEY_A, true);
    expectReport(kFirstBox, "key down A");
}
