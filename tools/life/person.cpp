#include "life/person.h"

#include <linux/input-event-codes.h>

#include <algorithm>
#include <csignal>
#include <thread>

namespace life {
namespace {

constexpr int kKeyboard = 0, kMouse = 1, kPanel = 2, kOtherKeyboard = 4, kOtherMouse = 5;
constexpr int kTouchScale = 16384;
constexpr std::size_t kPast = 60;
constexpr Milliseconds kTapApart{1100};  ///< taps that do not count together
constexpr Milliseconds kPatience{20000};
constexpr std::uint16_t kModifiers[] = {KEY_LEFTCTRL, KEY_LEFTSHIFT, KEY_LEFTALT, KEY_ESC};
constexpr std::uint16_t kLetters[] = {KEY_A, KEY_S, KEY_D, KEY_F, KEY_G, KEY_SPACE, KEY_ENTER};
/// Keys that are typed when it is looked whether each arrives, with their HID usages.
constexpr struct {
    std::uint16_t code;
    std::uint8_t usage;
} kProof[] = {{KEY_Q, 0x14}, {KEY_W, 0x1A}, {KEY_E, 0x08},
              {KEY_R, 0x15}, {KEY_T, 0x17}, {KEY_Z, 0x1D}};
constexpr std::uint16_t kProbe = KEY_B;
constexpr std::uint8_t kProbeUsage = 0x05;

constexpr const char* kBoxes[] = {"127.0.0.31", "127.0.0.32", "127.0.0.41", "127.0.0.42"};
constexpr const char* kWall = "relation&0,0,127.0.0.20#1,0,127.0.0.21";
constexpr const char* kCells = "details&127.0.0.20#0,0,127.0.0.31-8000#1,0,127.0.0.32-8000";
constexpr const char* kOtherCells = "details&127.0.0.21#0,0,127.0.0.41-8000#1,0,127.0.0.42-8000";
constexpr const char* kQuits[] = {"OSDQUIT", "PREVIEWQUIT", "KVMQUIT", "CONTINUE"};
constexpr const char* kUsualArrangement[] = {kWall, kCells, kOtherCells};
constexpr const char* kArrangements[] = {
    kWall,
    kCells,
    kOtherCells,
    "relation&0,0,0",
    "relation&0,0,127.0.0.20",
    "relation&0,0,127.0.0.20#0,1,127.0.0.21",
    "details&127.0.0.20#0,0,127.0.0.32-8000",
    "details&127.0.0.20#0,0,127.0.0.41-8000#0,1,127.0.0.42-8000",
    "details&127.0.0.21#0,0,127.0.0.31-8000",
    "MTO:0,0",
    "MTO:1,0",
    "MTO:9,9",
    "hotkey&LEFTCTRL+F1#LEFTALT+F2",
    "hotkey&",
    "[seq]\n[control]=127.0.0.20\nusb_link_device\nend"};
constexpr const char* kAnswers[] = {rig::kUsualAnswer, "vi_w=800&vi_h=600&kvm=abs",
                                    "vi_w=1280&vi_h=720&kvm=rel", "vi_w=9999999999&vi_h=&kvm="};

template <class Array>
auto anyOf(const Array& array, std::mt19937& random) {
    return array[random() % std::size(array)];
}

}  // namespace

rig::Plan plan(bool releaseEverything) {
    rig::Plan plan = rig::usualPlan();
    plan.devices.push_back({rig::Kind::kTouch, kPanel, "ILITEK ILITEK-TP"});
    if (releaseEverything) {
        plan.options.emplace_back("--release-everything");
    }
    return plan;
}

Person::Person(rig::World& world, Judge& judge, const Options& options)
    : world_(world),
      judge_(judge),
      options_(options),
      random_(options.seed),
      plugged_{kKeyboard, kMouse} {}

void Person::did(std::string_view what) {
    past_.emplace_back(what);
    if (past_.size() > kPast) {
        past_.pop_front();
    }
}

std::string Person::past() const {
    std::string text;
    for (const std::string& line : past_) {
        text += line + "\n";
    }
    return text;
}

void Person::rest() {
    if (options_.longest.count() > 0) {
        std::this_thread::sleep_for(
            Milliseconds(upTo(static_cast<int>(options_.longest.count())) + 1));
    }
}

void Person::order(const std::string& text) {
    did(text);
    world_.command(text);
}

/// A node that nobody has open takes nothing, and then nothing is held.
void Person::hold(int device, std::uint16_t code) {
    did("hold " + std::to_string(device) + " " + std::to_string(code));
    if (world_.board.key(device, code, true)) {
        held_[device].insert(code);
    }
}

/// A node that is full is tried again: a person's release is never lost on the way to the kernel.
void Person::release(int device, std::uint16_t code) {
    did("release " + std::to_string(device) + " " + std::to_string(code));
    held_[device].erase(code);
    for (int i = 0; i < 100 && !world_.board.key(device, code, false); ++i) {
        std::this_thread::sleep_for(Milliseconds(5));
    }
}

void Person::releaseAll() {
    for (const auto& [device, codes] : std::map(held_)) {
        for (const std::uint16_t code : codes) {
            release(device, code);
        }
    }
}

bool Person::isTooSoon(std::uint16_t modifier) {
    const auto now = Clock::now();
    auto& last = lastTap_[modifier];
    const bool tooSoon = !options_.releaseEverything && now - last < kTapApart;
    last = tooSoon ? last : now;
    return tooSoon;
}

void Person::type() {
    const int device =
        plugged_.contains(kOtherKeyboard) && upTo(3) == 0 ? kOtherKeyboard : kKeyboard;
    for (int i = upTo(6); i >= 0; --i) {
        const std::uint16_t code = anyOf(kLetters, random_);
        hold(device, code);
        rest();
        release(device, code);
    }
}

void Person::chord() {
    const std::uint16_t modifier = anyOf(kModifiers, random_);
    if (isTooSoon(modifier)) {
        return;
    }
    hold(kKeyboard, modifier);
    type();
    if (upTo(4) != 0) {  // else it stays down for a while
        release(kKeyboard, modifier);
    }
}

void Person::move() {
    const int device = plugged_.contains(kOtherMouse) && upTo(3) == 0 ? kOtherMouse : kMouse;
    did("move");
    for (int i = upTo(20); i >= 0; --i) {
        world_.board.move(device, upTo(41) - 20, upTo(41) - 20);
    }
    if (upTo(3) == 0) {
        world_.board.wheel(device, upTo(2) == 0 ? 1 : -1);
    }
}

void Person::cross() {
    did("cross");
    const int step = upTo(2) == 0 ? 700 : -700;
    for (int i = 0; i < 4; ++i) {
        world_.board.move(kMouse, step, upTo(11) - 5);
    }
}

void Person::drag() {
    const std::uint16_t button = upTo(3) == 0 ? BTN_RIGHT : BTN_LEFT;
    hold(kMouse, button);
    upTo(3) == 0 ? cross() : move();
    rest();
    if (upTo(5) != 0) {
        release(kMouse, button);
    }
}

void Person::touch(std::uint16_t code, int value) {
    world_.board.emit(kPanel, EV_ABS, code, value);
}

void Person::useTouch() {
    const auto at = [this](int x, int y) {
        touch(ABS_X, x);
        touch(ABS_Y, y);
        world_.board.emit(kPanel, EV_SYN, SYN_REPORT, 0);
    };
    int x = upTo(kTouchScale), y = upTo(kTouchScale);
    did("touch " + std::to_string(x) + " " + std::to_string(y));
    world_.board.emit(kPanel, EV_KEY, BTN_TOUCH, 1);
    at(x, y);
    for (int i = upTo(8); i > 0; --i) {
        x = std::min(x + upTo(300), kTouchScale - 1);
        y = std::min(y + upTo(300), kTouchScale - 1);
        at(x, y);
    }
    rest();
    release(kPanel, BTN_TOUCH);
}

void Person::useMenus() {
    constexpr const char* kMenus[] = {"OSDSTART", "OSDQUIT", "PREVIEWQUIT",
                                      "KVMQUIT",  "PAUSE",   "CONTINUE"};
    if (!options_.releaseEverything) {
        releaseAll();
        judge_.waitForQuiet(Milliseconds(20), Milliseconds(200));
    }
    if (upTo(3) == 0) {
        for (const char* const text : kQuits) {
            order(text);
        }
    } else if (!options_.releaseEverything || upTo(2) == 0) {
        order(anyOf(kMenus, random_));
    } else {  // by hand
        const std::uint16_t key = anyOf(kModifiers, random_);
        for (int i = 0; i < 3; ++i) {
            hold(kKeyboard, key);
            release(kKeyboard, key);
        }
    }
}

/// Half of the time as it was at the start, so that there is mostly a box in control.
void Person::arrange() {
    if (upTo(2) == 0) {
        order(anyOf(kArrangements, random_));
        return;
    }
    for (const char* const text : kUsualArrangement) {
        order(text);
    }
}

void Person::changeBoxes() {
    const std::string box = anyOf(kBoxes, random_);
    did("answers of " + box);
    world_.box(box).setAnswer(anyOf(kAnswers, random_));
}

void Person::plug() {
    const int device = upTo(2) == 0 ? kOtherKeyboard : kOtherMouse;
    if (upTo(4) == 0) {  // the usual one goes while it is held, and comes back
        const int usual = upTo(2) == 0 ? kKeyboard : kMouse;
        did("replug " + std::to_string(usual));
        hold(usual, usual == kKeyboard ? KEY_F : BTN_LEFT);
        rest();
        held_.erase(usual);
        world_.board.emitPart(usual);  // who has it open hears that it goes
        world_.board.unplug(usual);
        rest();
        world_.plug({usual == kKeyboard ? rig::Kind::kKeyboard : rig::Kind::kMouse, usual, ""});
    } else if (plugged_.erase(device) != 0) {
        did("unplug " + std::to_string(device));
        held_.erase(device);
        world_.board.unplug(device);
    } else {
        did("plug " + std::to_string(device));
        plugged_.insert(device);
        world_.plug(
            {device == kOtherKeyboard ? rig::Kind::kKeyboard : rig::Kind::kMouse, device, ""});
    }
}

void Person::fail() {
    switch (upTo(4)) {
        case 0:
            did("silence");
            return world_.box(anyOf(kBoxes, random_)).setAnswer(std::nullopt);
        case 1:
            did("held up");
            world_.daemon().signal(SIGSTOP);
            std::this_thread::sleep_for(Milliseconds(upTo(300)));
            return world_.daemon().signal(SIGCONT);
        case 2:
            did("junk");
            for (int i = 0; i < 50; ++i) {
                const std::string junk(static_cast<std::size_t>(upTo(1400)),
                                       static_cast<char>(upTo(256)));
                world_.command(junk);
                world_.control().send({"127.0.0.1", 19358}, junk);
            }
            return;
        default:
            did("a part of a record");
            world_.board.emitPart(kMouse);
    }
}

void Person::act() {
    ++acts_;
    const int kind = upTo(100);
    kind < 30   ? type()
    : kind < 40 ? chord()
    : kind < 60 ? move()
    : kind < 70 ? cross()
    : kind < 80 ? drag()
    : kind < 85 ? useTouch()
    : kind < 89 ? useMenus()
    : kind < 94 ? arrange()
    : kind < 97 ? changeBoxes()
    : kind < 98 ? plug()
                : (options_.faults ? fail() : move());
    rest();
}

/// The listener may just be restarting, so a key is pressed again and again until one arrives.
std::string Person::waitUntilServed() {
    const std::string mark = "mark" + std::to_string(++marks_);
    if (!world_.worksOff(mark, kPatience)) {
        return "the command channel does not answer\n";
    }
    const auto end = Clock::now() + kPatience;
    for (;;) {
        judge_.forgetPresses();
        world_.board.key(kKeyboard, kProbe, true);
        release(kKeyboard, kProbe);
        const auto got = judge_.presses(1, Milliseconds(500));
        if (!got.empty() && got.back().usage == kProbeUsage) {
            return "";
        }
        if (Clock::now() > end) {
            return "no key arrives any more\n";
        }
    }
}

/// True when everything that was typed so far is served: what still waits could open a menu later.
bool Person::isServed() {
    constexpr std::uint16_t kLast = KEY_SCROLLLOCK;
    world_.daemon().skipLines();
    const auto end = Clock::now() + kPatience;
    const std::string line = "type:1 code:" + std::to_string(kLast) + " value:0";
    do {
        world_.board.key(kKeyboard, kLast, true);
        release(kKeyboard, kLast);
    } while (!world_.daemon().waitForLine(line, Milliseconds(1000)) && Clock::now() < end);
    return Clock::now() < end;
}

/// The usual devices, answers and wall; nothing is held and no menu is open. False when no key is
/// served any more.
bool Person::bringBack() {
    releaseAll();
    did("settle");
    if (!isServed()) {
        return false;
    }
    for (const int device : {kOtherKeyboard, kOtherMouse}) {
        if (plugged_.erase(device) != 0) {
            world_.board.unplug(device);
        }
    }
    for (const char* const box : kBoxes) {
        world_.box(box).setAnswer(rig::kUsualAnswer);
    }
    for (const char* const text : kQuits) {
        order(text);
    }
    order("hotkey&");
    for (const char* const text : kUsualArrangement) {
        order(text);
    }
    order("MTO:0,0");
    return true;
}

/// Each of six keys arrives once, all at one box.
std::string Person::prove() {
    judge_.forgetPresses();
    for (const auto& key : kProof) {
        world_.board.key(kKeyboard, key.code, true);
        release(kKeyboard, key.code);
    }
    judge_.presses(std::size(kProof), Milliseconds(3000));
    judge_.waitForQuiet(Milliseconds(100), kPatience);
    const auto got = judge_.presses(0, Milliseconds(0));
    std::string came;
    bool asTyped = got.size() == std::size(kProof) && judge_.repeated() == 0;
    for (std::size_t i = 0; i < got.size(); ++i) {
        came += got[i].place + " usage " + std::to_string(got[i].usage) + "\n";
        asTyped = asTyped && got[i].usage == kProof[i].usage && got[i].place == got[0].place;
    }
    return asTyped ? "" : "six keys were typed, this came:\n" + came;
}

std::string Person::settle() {
    std::string problem = bringBack() ? waitUntilServed() : "no key is served any more\n";
    if (problem.empty()) {
        // A plug may be under way whose restart comes within the next second.
        std::this_thread::sleep_for(Milliseconds(2500));
        problem = waitUntilServed();
    }
    if (problem.empty() && !judge_.waitForQuiet(Milliseconds(200), kPatience)) {
        problem = "reports without end\n";
    }
    if (problem.empty() && !judge_.down().empty()) {
        problem = "stays down: " + judge_.down();
    }
    if (problem.empty()) {
        problem = prove();
    }
    world_.clear();
    return problem + world_.accident();
}

}  // namespace life
