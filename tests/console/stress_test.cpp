#include <linux/input-event-codes.h>

#include <atomic>
#include <random>
#include <thread>

#include "console.h"

/// Everything at once, and anything at all: the console goes on serving.

namespace {

constexpr std::uint16_t kCommandPort = 41236;
constexpr const char* kWall = "relation&0,0,127.0.0.20#1,0,127.0.0.21#0,1,127.0.0.22";
constexpr const char* kCells =
    "details&127.0.0.20#0,0,127.0.0.31-8000#1,0,127.0.0.32-8000#0,1,127.0.0.41-8000";

class Stress : public Console {
 protected:
    void send(std::string_view command) {
        world().control().send({"127.0.0.1", kCommandPort}, command);
    }

    /// Waits until the channel has worked off what was sent; a full socket drops, so it asks again.
    void expectAnswering(const std::string& mark) {
        const auto end = std::chrono::steady_clock::now() + kPatience;
        while (std::chrono::steady_clock::now() < end) {
            send(mark);
            if (daemon().waitForLine("recv error osd command:" + mark, rig::Milliseconds{300})) {
                return;
            }
        }
        FAIL() << "the command channel does not answer";
    }

    /// Back to a known state, whatever happened before; then a key reaches the box.
    void expectServing() {
        world().setTime({5000, 0});
        expectAnswering("before");
        for (const char* command : {"OSDQUIT", "PREVIEWQUIT", "KVMQUIT", "CONTINUE", kWall, kCells,
                                    "OSDQUIT", "relation&0,0,127.0.0.20", kCells}) {
            send(command);
        }
        expectAnswering("after");
        expectKeyArrives();
    }

    /// The listener may just be restarting, so the key is pressed again every half second.
    void expectKeyArrives() {
        const auto end = std::chrono::steady_clock::now() + kPatience;
        while (std::chrono::steady_clock::now() < end) {
            board().key(kKeyboard, KEY_A, true);
            board().key(kKeyboard, KEY_A, false);
            const auto pause = std::chrono::steady_clock::now() + std::chrono::milliseconds(500);
            while (std::chrono::steady_clock::now() < pause) {
                const auto report = box(kFirstBox).next(rig::Milliseconds{50});
                if (report && report->text == "key down A") {
                    return;
                }
            }
        }
        FAIL() << "no key arrives any more";
    }

    static constexpr rig::Milliseconds kPatience{10000};
};

/// Commands in random order, for as long as `busy`.
void sendCommands(rig::World& world, const std::atomic<bool>& busy) {
    const std::vector<std::string> commands{"OSDSTART",
                                            "OSDQUIT",
                                            "PREVIEWQUIT",
                                            "KVMQUIT",
                                            kWall,
                                            kCells,
                                            "relation&0,0,0",
                                            "relation&0,0,127.0.0.20#0,1,127.0.0.21",
                                            "details&127.0.0.21#0,0,127.0.0.42-8000",
                                            "hotkey&ctrl+f1#alt+2",
                                            "hotkey&",
                                            "MTO:0,0",
                                            "MTO:1,0",
                                            "MTO:9,9",
                                            "PAUSE",
                                            "CONTINUE",
                                            "[seq]\n[control]=127.0.0.20\nusb_link_device\nend"};
    std::mt19937 random(7);
    while (busy) {
        world.control().send({"127.0.0.1", kCommandPort}, commands[random() % commands.size()]);
        std::this_thread::sleep_for(rig::Milliseconds{3});
    }
}

/// Every box changes its mind about its picture and its pointer mode.
void changeAnswers(rig::World& world, const std::atomic<bool>& busy) {
    std::mt19937 random(11);
    while (busy) {
        for (const char* address : {"127.0.0.31", "127.0.0.32", "127.0.0.41", "127.0.0.42"}) {
            const char* const answers[] = {"vi_w=1920&vi_h=1080&kvm=abs",
                                           "vi_w=800&vi_h=600&kvm=abs",
                                           "vi_w=1280&vi_h=720&kvm=rel"};
            world.box(address).setAnswer(answers[random() % 3]);
            world.box(address).clear();
        }
        std::this_thread::sleep_for(rig::Milliseconds{20});
    }
}

}  // namespace

TEST_F(Stress, CommandsCrossingsAndQueriesAtOnce) {
    plan.virtualClock = true;
    plan.devices.push_back({rig::Kind::kTouch, 2, "ILITEK ILITEK-TP"});
    start();
    world().setTime({1000, 0}, 100);  // a query every 50 ms
    std::atomic<bool> busy{true};
    std::thread commands(sendCommands, std::ref(world()), std::cref(busy));
    std::thread answers(changeAnswers, std::ref(world()), std::cref(busy));
    std::mt19937 random(3);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(3);
    int round = 0;
    for (; std::chrono::steady_clock::now() < end; ++round) {
        const int dx = static_cast<int>(random() % 6000) - 3000;
        const int dy = static_cast<int>(random() % 4000) - 2000;
        board().move(kMouse, dx, dy);
        const auto key = static_cast<std::uint16_t>(KEY_A + random() % 9);
        board().key(kKeyboard, random() % 4 == 0 ? std::uint16_t{KEY_LEFTCTRL} : key, true);
        board().key(kKeyboard, KEY_A, false);
        board().emit(2, EV_ABS, ABS_X, static_cast<int>(random() % 16384));
        board().emit(2, EV_SYN, SYN_REPORT, 0);
        std::this_thread::sleep_for(rig::Milliseconds{2});
    }
    busy = false;
    commands.join();
    answers.join();
    world().box(kFirstBox).setAnswer(rig::kUsualAnswer);
    EXPECT_GT(round, 100);
    expectServing();
}

TEST_F(Stress, AnyDatagramLeavesTheConsoleServing) {
    plan.virtualClock = true;
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
            std::this_thread::sleep_for(rig::Milliseconds{5});
        }
    }
    expectServing();
}
