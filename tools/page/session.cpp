#include "page/session.h"

#include <linux/input-event-codes.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "page/settings_view.h"
#include "remote/wire_text.h"
#include "words/keys.h"

namespace page {

using nlohmann::json;
using Kind = Said::Kind;

namespace {

constexpr std::chrono::milliseconds kWatch{100};
constexpr std::chrono::seconds kSilence{1};  // a viewer that holds keys and says nothing
constexpr std::chrono::seconds kIdle{60};    // one that drives and does nothing

bool isInput(Kind kind) {
    return kind == Kind::kKey || kind == Kind::kMove || kind == Kind::kButton ||
           kind == Kind::kWheel;
}

}  // namespace

Session::Session(std::string settings, std::vector<std::string> users, std::string scripts,
                 bool isOwnNetwork)
    : isOwnNetwork_(isOwnNetwork),
      users_(std::move(users)),
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
        hands_.letGo(stage_.world(), Clock::now());
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
        hands_.input(*stage_.world(), said, Clock::now());
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
    hands_.letGo(stage_.world(), Clock::now());
    driver_ = id;
    viewers_[id].active = Clock::now();
    changed();
}

void Session::tryThing(const Said& said) {
    switch (said.kind) {
        case Kind::kLetGo:
            return hands_.letGo(stage_.world(), Clock::now());
        case Kind::kCommand:
            return order(said.text);
        case Kind::kPlug:
        case Kind::kUnplug:
            goals_.insert(said.kind == Kind::kUnplug ? "unplug" : "plug");
            return hands_.plug(*stage_.world(), said.text, said.kind == Kind::kPlug, Clock::now());
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

void Session::order(const std::string& text) {
    constexpr std::size_t kLargest = 2047;
    const std::string sent = text.substr(0, kLargest);
    stage_.world()->command(sent);
    rig::Report report;
    report.at.port = wire::kCommandPort;
    report.bytes.assign(sent.begin(), sent.end());
    report.text = sent;
    model_.saw("console", report);
    recording_.did("send " + std::to_string(wire::kCommandPort) + " " + sent, Clock::now());
}

void Session::check(int id, const std::string& settings) { tell(id, settingsView(settings)); }

/// Apply stops the daemon, writes, starts.
void Session::apply(int id, const std::string& settings) {
    const auto plan = planOf(settings, users_, isOwnNetwork_);
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
    const auto plan = planOf(settings_, users_, isOwnNetwork_);
    if (plan.problem.empty()) {
        stage_.start(plan.plan, settings_);
    } else {
        stage_.setNotice(plan.problem);
    }
    changed();
}

/// Another wall is shown: nothing of the one before counts.
void Session::begins(const rig::Plan& plan) {
    hands_.begin();
    model_.setWall(plan.wall, plan.local, plan.users);
    recording_.begin(plan);
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
    if (driver != viewers_.end() && !hands_.held().empty() &&
        Clock::now() - driver->second.heard > kSilence) {
        hands_.letGo(stage_.world(), Clock::now());
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
    for (const std::uint16_t code : hands_.held()) {
        held.push_back(words::eventName({EV_KEY, code}));
    }
    state["t"] = "state";
    state["drives"] = id == driver_;
    state["viewers"] = viewers_.size();
    state["held"] = std::move(held);
    state["plugged"] = hands_.plugged();
    state["goals"] = goals_;
    state["running"] = stage_.world() != nullptr;
    state["notice"] = stage_.notice();
    return state.dump(-1, ' ', false, json::error_handler_t::replace);
}

}  // namespace page
