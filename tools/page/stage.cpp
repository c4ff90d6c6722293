#include "page/stage.h"

#include <chrono>
#include <filesystem>
#include <system_error>

#include "page/settings_view.h"
#include "rig/script.h"

namespace page {
namespace {

using Clock = std::chrono::steady_clock;

/// Waits so long, or until it is asked to end.
void rest(const std::stop_token& end, Clock::duration time) {
    constexpr std::chrono::milliseconds kLook{50};
    for (; time.count() > 0 && !end.stop_requested(); time -= kLook) {
        std::this_thread::sleep_for(kLook);
    }
}

}  // namespace

Stage::Stage(std::string scripts, Events events)
    : scripts_(std::move(scripts)), events_(std::move(events)) {}

void Stage::later(unsigned generation, std::function<void()> action) {
    server_->post([this, generation, action = std::move(action)] {
        if (generation == generation_) {
            action();
        }
    });
}

rig::World::Observer Stage::reports() {
    return [this, generation = generation_](const std::string& name, const rig::Report& report) {
        later(generation, [this, name, report] { events_.report(name, report); });
    };
}

rig::Daemon::Observer Stage::lines() {
    return [this, generation = generation_](std::string_view line) {
        if (line == "stop kvm" || line.starts_with("osdSet ")) {
            later(generation, [this, text = std::string(line)] { events_.line(text); });
        }
    };
}

void Stage::start(const rig::Plan& plan, const std::string& settings) {
    halt();
    notice_ = "the console starts";
    events_.begins(plan);
    try {
        world_ = std::make_unique<rig::World>(plan, reports());
    } catch (const std::system_error& problem) {  // an address that nobody can have
        notice_ = problem.what();
        return;
    }
    world_->board.write("data/tav_rik.ini", settings);
    worker_ = std::jthread([this, world = world_.get(), observer = lines(),
                            generation = generation_](const std::stop_token& end) {
        const auto problem = world->start(observer);
        later(generation, [this, problem] {
            isRunning_ = !problem;
            notice_ = problem.value_or("");
            events_.changed();
        });
        rest(end, Clock::duration::max());  // the daemon ends with the thread that started it
    });
}

void Stage::tour() {
    halt();
    worker_ = std::jthread([this, generation = generation_](const std::stop_token& end) {
        playAll(end, generation);
        later(generation, events_.tourEnds);
    });
}

void Stage::playAll(const std::stop_token& end, unsigned generation) {
    constexpr std::chrono::milliseconds kLook{2500};
    for (const char* name :
         {"edge_left_right", "tap", "hotkey_local", "relative_box", "touch", "arrows"}) {
        const auto parsed =
            rig::loadScript(std::filesystem::path(scripts_) / (std::string(name) + ".script"));
        if (!parsed.script || end.stop_requested()) {
            return;
        }
        rig::Plan plan = parsed.script->plan;
        plan.virtualClock = true;
        plan.local = plan.local.empty() ? "127.0.0.20" : plan.local;
        later(generation, [this, plan, caption = captionOf(scripts_, name)] {
            notice_ = caption;
            events_.begins(plan);
        });
        rig::World world(plan, reports());
        runScript(*parsed.script, world);
        rest(end, kLook);
    }
}

void Stage::halt() {
    isRunning_ = false;
    ++generation_;
    if (worker_.joinable()) {
        worker_.request_stop();
        worker_.join();
    }
    world_.reset();
}

}  // namespace page
