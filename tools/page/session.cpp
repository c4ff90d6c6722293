#include "page/session.h"

#include <linux/input-event-codes.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "page/settings_view.h"
#include "words/keys.h"

namespace page {

using nlohmann::json;
using Kind = Said::Kind;

namespace {

constexpr int kKeyboard = 0, kMouse = 1, kTouch = 2;
constexpr std::chrono::milliseconds kWatch{100};
constexpr std::chrono::seconds kSilence{1};  // a viewer that holds keys and says nothing
constexpr std::chrono::seconds kIdle{60};    // one that drives and does nothing

bool isInput(Kind kind) {
    return kind == Kind::kKey || kind == Kind::kMove || kind == Kind::kButton ||
           kind == Kind::kWheel;
}

/// As golden scripts write it: "KEY_A down", "REL_X 5".
std::string stepOf(std::uint16_t type, std::uint16_t code, std::int32_t value) {
    const std::string name = words::eventName({type, code});
    if (type == EV_KEY) {
        return name + (value != 0 ? " down" : " up");
    }
    return type == EV_SYN ? name : name + " " + std::to_string(value);
}

}  // namespace

Session::Session(std::string settings, std::string scripts, bool isOwnNetwork)
    : isOwnNetwork_(isOwnNetwork),
      settings_(std::move(settings)),
      stage_(std::move(scripts),
             {[this](const rig::Plan& plan) { begins(plan); },
              [this](const std::string& name, const rig::Report& report) { saw(name, report); },
              [this](std::string_view line) {
                  model_.sawLine(line);
                  changed();
              },
              [this] { changed(); }, [this] { startUsual(); }}) {}

Server::Handlers Session::handlers() {
    return {[this](int id) { opened(id); },
            [this](int id, const std::string& text) { said(id, text); },
            [this](int id) { closed(id); }, [this](int id) { return state(id); }};
}

void Session::begin(Server& server) {
    server_ = &server;
    stage_.setServer(server);
    server.every(kWatch, [this] { watch(); });
    startUsual();
}

void Session::opened(int id) {
    const auto now = Clock::now();
    viewers_[id] = {now, now, 1};
    driver_ = driver_ == 0 ? id : driver_;
    tell(id, {{"t", "settings"}, {"text", settings_}});
    check(id, settings_);
    changed();
}

void Session::closed(int id) {
    viewers_.erase(id);
    if (id == driver_) {
        letGo();
        driver_ = viewers_.empty() ? 0 : viewers_.begin()->first;
    }
    changed();
}

void Session::said(int id, const std::string& text) {
    const auto said = parseSaid(text);
    if (!said) {
        return tell(id, {{"t", "told"}, {"text", "that made no sense to the console"}});
    }
    viewers_[id].heard = Clock::now();
    carryOut(id, *said);
}

void Session::carryOut(int id, const Said& said) {
    switch (said.kind) {
        case Kind::kBeat:
            return;
        case Kind::kDrive:
            return drive(id);
        case Kind::kUnfold:
            goals_.insert("read");
            changed();
            return tell(
                id, {{"t", "unfolded"},
                     {"datagram", model_.unfold(static_cast<unsigned long>(std::max(0, said.x)))}});
        case Kind::kCheck:
            return check(id, said.text);
        case Kind::kSave:
            return tell(id, {{"t", "script"}, {"text", recording_.script()}});
        default:
            break;
    }
    if (id != driver_) {
        return tell(id, {{"t", "told"}, {"text", "somebody else drives; ask for the console"}});
    }
    if (said.kind == Kind::kApply) {
        return apply(id, said.text);
    }
    if (said.kind == Kind::kTour) {
        return stage_.tour();
    }
    if (stage_.world() == nullptr) {
        return;
    }
    if (isInput(said.kind)) {
        viewers_[id].active = Clock::now();
        input(said);
    } else {
        tryThing(said);
    }
    changed();
}

/// The console goes to who asks when nobody has it or who has it did nothing for a minute.
void Session::drive(int id) {
    const auto idle = Clock::now() - viewers_[driver_].active;
    if (driver_ != id && idle < kIdle) {
        const auto left = std::chrono::duration_cast<std::chrono::seconds>(kIdle - idle).count();
        return tell(id, {{"t", "told"},
                         {"text", "somebody drives; if nothing is done, ask again in " +
                                      std::to_string(left + 1) + " s"}});
    }
    letGo();
    driver_ = id;
    viewers_[id].active = Clock::now();
    changed();
}

void Session::input(const Said& said) {
    switch (said.kind) {
        case Kind::kKey:
        case Kind::kButton: {
            // A browser repeats a key that is held, and tells a release of what it never told down.
            const bool isHeld = held_.contains(said.code);
            if (isHeld == said.isDown) {
                return;
            }
            if (said.isDown) {
                held_.insert(said.code);
            } else {
                held_.erase(said.code);
            }
            return emit(EV_KEY, said.code, said.isDown ? 1 : 0, true);
        }
        case Kind::kMove:
            if (said.x != 0) {
                emit(EV_REL, REL_X, said.x, said.y == 0);
            }
            if (said.y != 0) {
                emit(EV_REL, REL_Y, said.y, true);
            }
            return;
        default:
            if (said.y != 0) {
                emit(EV_REL, REL_WHEEL, said.y, true);
            }
    }
}

void Session::tryThing(const Said& said) {
    switch (said.kind) {
        case Kind::kLetGo:
            return letGo();
        case Kind::kCommand:
            return order(said.text);
        case Kind::kPlug:
        case Kind::kUnplug:
            return plug(said.text, said.kind == Kind::kPlug);
        case Kind::kAnswer: {
            const auto answer = said.text.empty() ? std::nullopt : std::optional(said.text);
            if (stage_.world()->hasBox(said.where)) {
                stage_.world()->setAnswer(said.where, answer);
                model_.setAnswer(said.where, answer);
                recording_.did("answer " + said.where + " " + said.text, Clock::now());
            }
            return;
        }
        default:
            return;
    }
}

void Session::emit(std::uint16_t type, std::uint16_t code, std::int32_t value, bool ends) {
    const bool isMouse = type == EV_REL || code >= BTN_MISC;
    const char* const device = isMouse ? "mouse" : "keyboard";
    if (!plugged_.contains(device)) {
        return;
    }
    const int node = isMouse ? kMouse : kKeyboard;
    stage_.world()->board.emit(node, type, code, value);
    recording_.did(stepOf(type, code, value), Clock::now());
    if (ends) {
        stage_.world()->board.emit(node, EV_SYN, SYN_REPORT, 0);
        recording_.did(stepOf(EV_SYN, SYN_REPORT, 0), Clock::now());
    }
}

/// Real up records for all that the driver holds.
void Session::letGo() {
    if (stage_.world() == nullptr) {
        return held_.clear();
    }
    for (const std::uint16_t code : held_) {
        emit(EV_KEY, code, 0, true);
    }
    held_.clear();
}

void Session::plug(const std::string& kind, bool isPlugged) {
    const std::map<std::string, rig::PlannedDevice> kDevices{
        {"keyboard", {rig::Kind::kKeyboard, kKeyboard, ""}},
        {"mouse", {rig::Kind::kMouse, kMouse, ""}},
        {"touch", {rig::Kind::kTouch, kTouch, "Siliconworks"}}};
    const auto device = kDevices.find(kind);
    if (device == kDevices.end() || plugged_.contains(kind) == isPlugged) {
        return;
    }
    const std::string node = "event" + std::to_string(device->second.number);
    if (isPlugged) {
        plugged_.insert(kind);
        stage_.world()->plug(device->second);
        recording_.did("plug " + kind + " " + node, Clock::now());
    } else {
        plugged_.erase(kind);
        std::erase_if(held_,
                      [&](std::uint16_t code) { return (code >= BTN_MISC) == (kind == "mouse"); });
        stage_.world()->board.unplug(device->second.number);
        recording_.did("unplug " + node, Clock::now());
        goals_.insert("unplug");
    }
}

void Session::order(const std::string& text) {
    constexpr std::size_t kLargest = 2047;
    const std::string sent = text.substr(0, kLargest);
    stage_.world()->command(sent);
    rig::Report report;
    report.at.port = 41236;
    report.bytes.assign(sent.begin(), sent.end());
    report.text = sent;
    model_.saw("console", report);
    recording_.did("send 41236 " + sent, Clock::now());
}

void Session::check(int id, const std::string& settings) { tell(id, settingsView(settings)); }

/// Apply stops the daemon, writes, starts.
void Session::apply(int id, const std::string& settings) {
    const auto plan = planOf(settings, isOwnNetwork_);
    if (!plan.problem.empty()) {
        return tell(id, {{"t", "told"}, {"text", plan.problem}});
    }
    settings_ = settings;
    goals_.insert("wall");
    for (const auto& [other, viewer] : viewers_) {
        tell(other, {{"t", "settings"}, {"text", settings_}});
    }
    stage_.start(plan.plan, settings_);
    changed();
}

void Session::startUsual() {
    const auto plan = planOf(settings_, isOwnNetwork_);
    if (plan.problem.empty()) {
        stage_.start(plan.plan, settings_);
    } else {
        stage_.setNotice(plan.problem);
    }
    changed();
}

/// Another wall is shown: nothing of the one before counts.
void Session::begins(const rig::Plan& plan) {
    held_.clear();
    model_.setWall(plan.wall, plan.local, plan.users);
    recording_.begin(plan);
    plugged_ = {"keyboard", "mouse"};
    for (auto& [id, viewer] : viewers_) {
        viewer.firstDatagram = 1;
    }
    changed();
}

void Session::saw(const std::string& name, const rig::Report& report) {
    const std::string before = model_.inControl();
    model_.saw(name, report);
    recording_.came(name, report.text);
    if (!before.empty() && before != model_.inControl()) {
        goals_.insert("cross");
    }
    if (report.text == "OSDSTART") {
        goals_.insert("taps");
    }
    if (report.text.find("key down") != std::string::npos) {
        goals_.insert("type");
    }
    changed();
}

/// A driver that holds something and is not heard of lets go of it.
void Session::watch() {
    const auto driver = viewers_.find(driver_);
    if (driver != viewers_.end() && !held_.empty() &&
        Clock::now() - driver->second.heard > kSilence) {
        letGo();
        changed();
    }
}

void Session::tell(int id, const json& message) {
    server_->send(id, message.dump(-1, ' ', false, json::error_handler_t::replace));
}

void Session::changed() { server_->changed(); }

std::string Session::state(int id) {
    Viewer& viewer = viewers_[id];
    json state = model_.state(viewer.firstDatagram);
    viewer.firstDatagram = model_.count() + 1;
    json held = json::array();
    for (const std::uint16_t code : held_) {
        held.push_back(words::eventName({EV_KEY, code}));
    }
    state["t"] = "state";
    state["drives"] = id == driver_;
    state["viewers"] = viewers_.size();
    state["held"] = std::move(held);
    state["plugged"] = plugged_;
    state["goals"] = goals_;
    state["running"] = stage_.world() != nullptr;
    state["notice"] = stage_.notice();
    return state.dump(-1, ' ', false, json::error_handler_t::replace);
}

}  // namespace page
