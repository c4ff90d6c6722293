#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>

#include "rig/drive.h"
#include "rig/isolation.h"
#include "rig/script.h"

namespace {

constexpr const char* kTour = R"(# A key, a combination, and the pointer with its buttons and wheel.
KEY_A down
box 127.0.0.31  key down A
KEY_A up
box 127.0.0.31  keys up

KEY_LEFTSHIFT down
box 127.0.0.31  modifiers LEFTSHIFT
KEY_7 down
box 127.0.0.31  key down LEFTSHIFT+7
KEY_7 up
box 127.0.0.31  modifiers LEFTSHIFT
KEY_LEFTSHIFT up
box 127.0.0.31  keys up

KEY_LEFTCTRL down
box 127.0.0.31  modifiers LEFTCTRL
KEY_C down
box 127.0.0.31  key down LEFTCTRL+C
KEY_C up
box 127.0.0.31  modifiers LEFTCTRL
KEY_LEFTCTRL up
box 127.0.0.31  keys up

REL_X 412; REL_Y 300; SYN
box 127.0.0.31  pointer 412,300 buttons none
BTN_LEFT down
box 127.0.0.31  pointer 412,300 buttons left
REL_X 20; SYN
box 127.0.0.31  pointer 432,300 buttons left
BTN_LEFT up
box 127.0.0.31  pointer 432,300 buttons none
REL_WHEEL -1
box 127.0.0.31  pointer 432,300 buttons none wheel -1
SYN
box 127.0.0.31  pointer 432,300 buttons none
nothing
)";

void showReport(const std::string& name, const rig::Report& report) {
    rig::show(name + "  " + report.text);
}

int demo(bool log) {
    const rig::ParsedScript parsed = rig::parseScript(kTour, "tour");
    if (!parsed.script) {
        std::fprintf(stderr, "tavrik-rig: %s\n", parsed.problem.c_str());
        return 1;
    }
    rig::World world(parsed.script->plan, showReport);
    const auto lines = [](std::string_view line) { rig::show("  | " + std::string(line)); };
    const auto faults = runScript(*parsed.script, world,
                                  log ? rig::Daemon::Observer(lines) : rig::Daemon::Observer());
    for (const std::string& fault : faults) {
        rig::show(fault);
    }
    rig::show(faults.empty() ? "Every expected report arrived."
                             : "Not everything arrived as expected.");
    return faults.empty() ? 0 : 1;
}

int driveByHand(bool log) {
    if (isatty(STDIN_FILENO) == 0) {
        std::fprintf(stderr, "tavrik-rig: drive needs a terminal; demo does not\n");
        return 2;
    }
    rig::World world(rig::usualPlan(), showReport);
    return rig::drive(world, log);
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app(
        "A virtual console: keyboard, mouse, and a wall of two screens with two boxes each.");
    bool log = false;
    app.add_flag("--log", log, "Show the daemon's own lines too");
    app.require_subcommand(1);
    app.fallthrough();
    app.add_subcommand("demo", "Play a short tour and check what every box receives");
    const CLI::App* byHand = app.add_subcommand("drive", "Drive it from this terminal");
    CLI11_PARSE(app, argc, argv);
    try {
        rig::enterOwnNetwork();  // where that is refused, the machine's own loopback serves
        return byHand->parsed() ? driveByHand(log) : demo(log);
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "tavrik-rig: %s\n", problem.what());
        return 1;
    }
}
