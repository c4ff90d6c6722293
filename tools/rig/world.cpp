#include "rig/world.h"

#include <algorithm>
#include <set>
#include <sstream>

#include "remote/wire.h"

namespace rig {
namespace {

constexpr int kPortBase = 80;
constexpr Milliseconds kStartLimit{20000};
constexpr Milliseconds kReportLimit{3000};
/// An answer that is sure to come is waited for even on a machine that has no time.
constexpr Milliseconds kPatience{2000};
constexpr const char* kNoBox = "0.0.0.0";

std::vector<std::string> split(const std::string& text, char delimiter) {
    std::vector<std::string> pieces;
    std::istringstream stream(text);
    for (std::string piece; std::getline(stream, piece, delimiter);) {
        pieces.push_back(piece);
    }
    return pieces;
}

/// The third field of a map entry, "x,y,name".
std::string entryName(const std::string& entry) {
    const auto fields = split(entry, ',');
    return fields.size() > 2 ? fields[2] : "";
}

Endpoint endpointOf(const std::string& name) {
    const std::size_t minus = name.find('-');
    const int offset = minus == std::string::npos ? 0 : std::atoi(name.c_str() + minus + 1);
    return {name.substr(0, minus), static_cast<std::uint16_t>(kPortBase + offset)};
}

/// The addresses of the output boxes, in wall order.
std::vector<std::string> outputs(const Plan& plan) {
    std::vector<std::string> found;
    for (const std::string& line : plan.wall) {
        found.push_back(endpointOf(entryName(split(line, '#').front())).address);
    }
    return found;
}

/// The wall's own boxes, then the planned ones, then the user-list ports.
std::vector<PlannedBox> allBoxes(const Plan& plan) {
    std::vector<PlannedBox> boxes = plan.boxes;
    const auto known = [&boxes](const Endpoint& at) {
        return std::any_of(boxes.begin(), boxes.end(), [&at](const PlannedBox& box) {
            return box.at.address == at.address && box.at.port == at.port;
        });
    };
    for (const std::string& line : plan.wall) {
        const auto entries = split(line, '#');
        for (std::size_t i = 1; i < entries.size(); ++i) {
            const Endpoint at = endpointOf(entryName(entries[i]));
            if (at.address != kNoBox && !known(at)) {
                boxes.push_back({at, kUsualAnswer});
            }
        }
    }
    for (const std::string& user : plan.users) {
        boxes.push_back({{user, wire::kUserPort}, std::nullopt});
    }
    return boxes;
}

}  // namespace

Plan usualPlan() {
    Plan plan;
    plan.wall = {"0,0,127.0.0.20#0,0,127.0.0.31-8000#1,0,127.0.0.32-8000",
                 "1,0,127.0.0.21#0,0,127.0.0.41-8000#1,0,127.0.0.42-8000"};
    plan.devices = {{Kind::kKeyboard, 0, ""}, {Kind::kMouse, 1, ""}};
    return plan;
}

World::World(const Plan& plan, const Observer& observer) : plan_(plan) {
    const std::vector<std::string> screens = outputs(plan);
    if (plan_.local.empty()) {
        plan_.local = screens.empty() ? "127.0.0.1" : screens.front();
    }
    board.setWall(plan.wall);
    board.setOsd(plan.osd);
    board.setLocalAddress(plan_.local);
    board.setUsers(plan.users);
    if (!plan.board.empty()) {
        board.setBoardName(plan.board);
    }
    for (const auto& [key, value] : plan.settings) {
        board.setSetting(key, value);
    }
    for (const PlannedDevice& device : plan.devices) {
        plug(device);
    }
    openBoxes(observer);
    openRecorders(observer);
    Box::Observer replies;
    if (observer) {
        replies = [observer](const Report& report) { observer("reply", report); };
    }
    control_ =
        std::make_unique<Box>(std::vector<Endpoint>{{"127.0.0.1", 0}}, std::nullopt, replies);
}

void World::plug(const PlannedDevice& device) {
    const std::string& name = device.name;
    switch (device.kind) {
        case Kind::kKeyboard:
            return board.plugKeyboard(device.number, name.empty() ? "Rig Keyboard" : name);
        case Kind::kMouse:
            return board.plugMouse(device.number, name.empty() ? "Rig Mouse" : name);
        case Kind::kTouch:
            return board.plugTouch(device.number, name);
        case Kind::kDead:
            return board.plugDead(device.number, name.empty() ? "Rig Dead Keyboard" : name);
    }
}

void World::setTime(const Stamp& time, int speed) {
    time_ = time;
    speed_ = speed;
    writeClock();
}

void World::setAnswer(const std::string& address, std::optional<std::string> answer) {
    box(address).setAnswer(std::move(answer));
    writeClock();
}

void World::writeClock() const {
    const bool silence = std::any_of(boxes_.begin(), boxes_.end(), [this](const auto& entry) {
        return !entry.second->answers() && !isUser(entry.first);
    });
    board.write("clock.next",
                std::to_string(time_.seconds) + " " + std::to_string(time_.microseconds) + " " +
                    std::to_string(speed_) + " " + std::to_string(silence ? 0 : kPatience.count()));
    std::filesystem::rename(board.root() / "clock.next", Daemon::clockFile(board.root()));
}

void World::openBoxes(const Observer& observer) {
    struct Ports {
        std::vector<Endpoint> ends;
        std::optional<std::string> answer;
    };
    std::map<std::string, Ports> merged;
    for (const PlannedBox& box : allBoxes(plan_)) {
        Ports& ports = merged[box.at.address];
        ports.ends.push_back(box.at);
        ports.answer = box.answer ? box.answer : ports.answer;
    }
    for (const auto& [address, ports] : merged) {
        Box::Observer watch;
        if (observer) {
            watch = [observer, name = "box " + address](const Report& report) {
                observer(name, report);
            };
        }
        const auto program = plan_.programs.find("box " + address);
        boxes_[address] =
            program == plan_.programs.end()
                ? std::make_unique<Box>(ports.ends, ports.answer, watch)
                : std::make_unique<Box>(std::make_unique<OutsideProgram>(program->second), watch);
    }
}

void World::openRecorders(const Observer& observer) {
    if (const auto program = plan_.programs.find("osd"); program != plan_.programs.end()) {
        osd_[wire::kOsdCommandPort] = osd_[wire::kOsdKeyPort] =
            std::make_shared<Box>(std::make_unique<OutsideProgram>(program->second));
        return;
    }
    std::set<std::string> addresses{"127.0.0.1", plan_.local};
    for (const std::string& address : outputs(plan_)) {
        addresses.insert(address);
    }
    for (const int number : {wire::kOsdCommandPort, wire::kOsdKeyPort}) {
        const auto port = static_cast<std::uint16_t>(number);
        std::vector<Endpoint> ends;
        ends.reserve(addresses.size());
        for (const std::string& address : addresses) {
            ends.push_back({address, port});
        }
        Box::Observer watch;
        if (observer) {
            watch = [observer, name = "osd " + std::to_string(port)](const Report& report) {
                observer(name, report);
            };
        }
        osd_[port] = std::make_shared<Box>(ends, std::nullopt, watch);
    }
}

std::optional<std::string> World::start(Daemon::Observer lines) {
    if (plan_.virtualClock) {
        writeClock();
    }
    daemon_ = std::make_unique<Daemon>(board.root(), board.work(), std::move(lines),
                                       plan_.virtualClock, plan_.options);
    const auto selected = daemon_->waitForLine(
        [](std::string_view line) { return line.starts_with("get(0x"); }, kStartLimit);
    if (!selected) {
        return "the listener's first line, get(0x..., did not come";
    }
    const std::size_t arrow = selected->rfind("-->");
    return firstBox(arrow == std::string::npos ? "" : selected->substr(arrow + 3));
}

/// Before it serves an event the listener brings the first box's lights up to date and asks it for
/// its picture size; a user-list box gets neither.
std::optional<std::string> World::firstBox(const std::string& selected) {
    if (isUser(selected)) {
        return std::nullopt;
    }
    if (!daemon_->waitForLine("end get input info", kReportLimit)) {
        return "the first box was not asked for its picture size";
    }
    const bool keyboard =
        std::any_of(plan_.devices.begin(), plan_.devices.end(),
                    [](const PlannedDevice& device) { return device.kind == Kind::kKeyboard; });
    if (!hasBox(selected) || !keyboard) {
        return std::nullopt;
    }
    auto report = box(selected).next(kReportLimit);
    if (std::count(plan_.options.begin(), plan_.options.end(), "--release-everything") != 0) {
        while (report && !report->text.starts_with("lights ")) {  // what a start lets go of
            report = box(selected).next(kReportLimit);
        }
    }
    if (!report || !report->text.starts_with("lights ")) {
        return "box " + selected + ": expected its lights first, got " +
               (report ? report->text : "nothing");
    }
    return std::nullopt;
}

bool World::isUser(const std::string& address) const {
    return std::count(plan_.users.begin(), plan_.users.end(), address) != 0;
}

Box& World::box(const std::string& address) { return *boxes_.at(address); }

void World::command(std::string_view text) const { control_->send({"127.0.0.1", 41236}, text); }

bool World::worksOff(const std::string& mark, Milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    do {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        command(mark);  // a full socket drops
    } while (!daemon_->waitForLine("recv error osd command:" + mark, Milliseconds(300)));
    return true;
}

Box& World::osd(std::uint16_t port) { return *osd_.at(port); }

std::vector<std::string> World::leftovers() const {
    std::vector<std::string> found;
    for (const auto& [address, box] : boxes_) {
        for (const Report& report : box->pending()) {
            found.push_back("box " + address + "  " + report.text);
        }
    }
    for (const auto& [port, box] : osd_) {
        for (const Report& report : box->pending()) {
            if (report.at.port == port) {
                found.push_back("osd " + std::to_string(port) + "  " + report.text);
            }
        }
    }
    return found;
}

std::string World::accident() const {
    if (!daemon_) {
        return {};
    }
    std::string text = daemon_->running() ? "" : "the daemon ended\n";
    bool report = false;
    for (const std::string& line : daemon_->errorLines()) {
        report = report || line.find("Sanitizer") != std::string::npos ||
                 line.find("runtime error:") != std::string::npos;
        text += report ? line + "\n" : "";
    }
    return text;
}

void World::clear() {
    for (const auto& [address, box] : boxes_) {
        box->clear();
    }
    for (const auto& [port, box] : osd_) {
        box->clear();
    }
}

}  // namespace rig
