#include <linux/input-event-codes.h>

#include <algorithm>
#include <thread>

#include "rig/script.h"

namespace rig {
namespace {

constexpr Milliseconds kExpectLimit{3000};
constexpr Milliseconds kSilence{100};
constexpr std::size_t kMostFaults = 5;
constexpr const char* kDaemonAddress = "127.0.0.1";
constexpr std::uint16_t kCommandPort = 41236;

/// Plays the steps; the time of the records, and of a daemon with a virtual clock, starts at 1000 s
/// and moves with the pauses alone.
class Player {
 public:
    Player(const Script& script, World& world) : script_(script), world_(world) {}

    std::vector<std::string> play();

 private:
    void run(const Step& step);
    void settle(const Step& step);
    void settleListener(const Step& step);
    void emit(const Step& step);
    void oddity(const Step& step);
    void pause(const Step& step);
    void expectReport(const Step& step, Box& box, const std::string& name, std::uint16_t port = 0);
    void expectAtBox(const Step& step);
    void expectLine(const Step& step);
    void expectNothing(const Step& step, Milliseconds limit);
    void fault(const Step& step, const std::string& expected, const std::string& got);

    const Script& script_;
    World& world_;
    Stamp now_{1000, 0};
    bool settled_ = true;  ///< no command was sent since the last event
    bool judged_ = true;   ///< the last step looked at what came out
    int marks_ = 0;
    std::vector<std::string> faults_;
};

std::string joined(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) {
        all += (all.empty() ? "" : "; ") + text;
    }
    return all;
}

std::uint16_t portOf(const std::string& text) {
    return static_cast<std::uint16_t>(std::atoi(text.c_str()));
}

std::vector<std::string> Player::play() {
    world_.setTime(now_);
    for (const Step& step : script_.steps) {
        run(step);
        if (faults_.size() >= kMostFaults) {
            return faults_;
        }
    }
    Step end;
    end.line = script_.steps.empty() ? 0 : script_.steps.back().line;
    expectNothing(end, kSilence);
    return faults_;
}

void Player::run(const Step& step) {
    if (step.kind == Step::Kind::kSend && judged_) {
        settleListener(step);
    }
    judged_ = step.kind != Step::Kind::kEmit && step.kind != Step::Kind::kPause;
    switch (step.kind) {
        case Step::Kind::kEmit:
            return emit(step);
        case Step::Kind::kPause:
            return pause(step);
        case Step::Kind::kBox:
            return expectAtBox(step);
        case Step::Kind::kOsd:
            return expectReport(step, world_.osd(portOf(step.where)), "osd " + step.where,
                                portOf(step.where));
        case Step::Kind::kLine:
            return expectLine(step);
        case Step::Kind::kSend:
            world_.control().send({kDaemonAddress, portOf(step.where)}, step.text);
            settled_ = false;
            return;
        case Step::Kind::kReply:
            return expectReport(step, world_.control(), "reply");
        case Step::Kind::kNothing:
            return expectNothing(step, kSilence);
        case Step::Kind::kPlug:
            return world_.plug(step.device);
        case Step::Kind::kUnplug:
            return world_.board.unplug(step.device.number);
        case Step::Kind::kAnswer:
            return world_.setAnswer(step.where,
                                    step.text.empty() ? std::nullopt : std::optional(step.text));
        case Step::Kind::kLate:
        case Step::Kind::kShort:
        case Step::Kind::kLights:
            return oddity(step);
    }
}

/// What does not go as it should: an answer after its time, a record that breaks off; and lights.
void Player::oddity(const Step& step) {
    if (step.kind == Step::Kind::kLights) {
        const unsigned num = step.text.find("num") != std::string::npos ? 1 : 0;
        const unsigned caps = step.text.find("caps") != std::string::npos ? 2 : 0;
        return world_.board.setLights(step.device.number, num | caps);
    }
    settle(step);
    const bool late = step.kind == Step::Kind::kLate;
    if (late ? !world_.box(step.where).answerLate(step.text)
             : !world_.board.emitPart(step.device.number)) {
        fault(step, "somebody who takes it", "nobody");
    }
}

/// A command's effect may follow its line, so an event waits until the daemon has worked off every
/// command: it does so in order, and reports one that it does not know.
void Player::settle(const Step& step) {
    if (settled_) {
        return;
    }
    settled_ = true;
    const std::string mark = "settled " + std::to_string(++marks_);
    world_.control().send({kDaemonAddress, kCommandPort}, mark);
    if (!world_.daemon().waitUntilPrinted("recv error osd command:" + mark, kExpectLimit)) {
        fault(step, "the commands to be worked off", "no answer");
    }
}

/// A report may be seen before the listener is done with its event, so a command that follows what
/// was seen waits for it: a record that means nothing gets its line when those before it are
/// served.
void Player::settleListener(const Step& step) {
    const auto& devices = script_.plan.devices;
    const auto keyboard =
        std::find_if(devices.begin(), devices.end(),
                     [](const PlannedDevice& device) { return device.kind == Kind::kKeyboard; });
    const int mark = ++marks_;
    if (keyboard != devices.end() &&
        world_.board.emit(keyboard->number, EV_MSC, MSC_SCAN, mark, now_) &&
        !world_.daemon().waitUntilPrinted("type:4 code:4 value:" + std::to_string(mark),
                                          kExpectLimit)) {
        fault(step, "the events to be worked off", "no line about the last");
    }
}

void Player::emit(const Step& step) {
    settle(step);
    for (const ScriptEvent& event : step.events) {
        if (!world_.board.emit(event.node, event.type, event.code, event.value, now_)) {
            fault(step, "event" + std::to_string(event.node) + " to take a record",
                  "a node that nobody reads");
        }
    }
}

void Player::pause(const Step& step) {
    constexpr std::int64_t kMicro = 1'000'000;
    const std::int64_t total =
        now_.seconds * kMicro + now_.microseconds + std::chrono::microseconds(step.pause).count();
    now_ = {static_cast<std::int32_t>(total / kMicro), static_cast<std::int32_t>(total % kMicro)};
    world_.setTime(now_);
    if (!script_.quick) {
        std::this_thread::sleep_for(step.pause);
    }
}

void Player::expectAtBox(const Step& step) {
    const std::string address = step.where.substr(0, step.where.find(':'));
    if (!world_.hasBox(address)) {
        return fault(step, "a box at " + address, "no such box");
    }
    const std::size_t colon = step.where.find(':');
    expectReport(
        step, world_.box(address), "box " + step.where,
        colon == std::string::npos ? std::uint16_t{0} : portOf(step.where.substr(colon + 1)));
}

void Player::expectReport(const Step& step, Box& box, const std::string& name, std::uint16_t port) {
    const auto report = box.next(kExpectLimit, port);
    const std::string expected = name + "  " + step.text;
    if (!report) {
        const auto others = world_.leftovers();
        return fault(step, expected,
                     others.empty() ? "nothing" : "nothing there, but " + joined(others));
    }
    if (report->text != step.text) {
        fault(step, expected, report->text);
    }
}

void Player::expectLine(const Step& step) {
    if (!world_.daemon().waitForLine(step.text, kExpectLimit)) {
        fault(step, "line " + step.text, "no such line");
    }
}

void Player::expectNothing(const Step& step, Milliseconds limit) {
    std::this_thread::sleep_for(limit);
    if (const auto others = world_.leftovers(); !others.empty()) {
        fault(step, "nothing more", joined(others));
        world_.clear();
    }
}

void Player::fault(const Step& step, const std::string& expected, const std::string& got) {
    faults_.push_back(script_.name + ":" + std::to_string(step.line) + ": expected " + expected +
                      ", got " + got);
}

}  // namespace

std::vector<std::string> runScript(const Script& script, World& world, Daemon::Observer lines) {
    if (const auto problem = world.start(std::move(lines))) {
        return {script.name + ": " + *problem};
    }
    std::vector<std::string> faults = Player(script, world).play();
    if (std::string accident = world.accident(); !accident.empty()) {
        faults.push_back(script.name + ": " + accident);
    }
    return faults;
}

}  // namespace rig
