#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>

#include "rig/drive.h"
#include "rig/isolation.h"
#include "rig/script.h"
#include "rig/tool.h"

namespace {

void showReport(const std::string& name, const rig::Report& report) {
    rig::show(name + "  " + report.text);
}

/// `programs`: "box 127.0.0.31=COMMAND" or "osd=COMMAND" each.
int play(const std::string& file, bool log, const std::vector<std::string>& programs = {}) {
    const rig::ParsedScript parsed = rig::loadScript(file);
    if (!parsed.script) {
        std::fprintf(stderr, "tavrik-rig: %s\n", parsed.problem.c_str());
        return 1;
    }
    rig::Plan plan = parsed.script->plan;
    plan.virtualClock = parsed.script->quick;
    for (const std::string& program : programs) {
        const std::size_t equals = std::min(program.find('='), program.size() - 1);
        plan.programs[program.substr(0, equals)] = program.substr(equals + 1);
    }
    rig::World world(plan, showReport);
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
    rig::World world(rig::usualPlan(), rig::showDriven);
    return rig::drive(world, log);
}

int run(int argc, char** argv) {
    CLI::App app(
        "A virtual console: keyboard, mouse, and a wall of two screens with two boxes each.");
    bool log = false;
    app.add_flag("--log", log, "Show the daemon's own lines too");
    app.require_subcommand(1);
    app.fallthrough();
    app.add_subcommand("demo", "Play a short tour and check what every box receives");
    std::string file = TAVRIK_TOUR;
    std::vector<std::string> programs;
    auto* script = app.add_subcommand("play", "Play a script and check what every box receives");
    script->add_option("FILE", file, "its words are in tools/rig/SCRIPTS.md")->required();
    script->add_option(
        "--program", programs,
        "\"box ADDRESS=COMMAND\" or \"osd=COMMAND\": stands in its place, and its lines "
        "count as what it received");
    const CLI::App* byHand = app.add_subcommand("drive", "Drive it from this terminal");
    CLI11_PARSE(app, argc, argv);
    rig::enterOwnNetwork();  // where that is refused, the machine's own loopback serves
    return byHand->parsed() ? driveByHand(log) : play(file, log, programs);
}

}  // namespace

int main(int argc, char** argv) { return rig::runTool("tavrik-rig", run, argc, argv); }
