#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <string>
#include <utility>

#include "rig/isolation.h"
#include "rig/tool.h"
#include "rows.h"

namespace {

int run(int argc, char** argv) {
    CLI::App app("What the console costs and how fast it is, beside a bare loop.");
    bool budget = false;
    std::string json;
    std::string only;
    std::string arm;
    app.add_flag("--budget", budget, "Only what is judged; exit status 1 when a limit is exceeded");
    app.add_option("--json", json, "Write the table to this file too");
    app.add_option("--only", only, "One group: delays, speed, mice, logs, costs or rest");
    app.add_option("--arm", arm,
                   "Only instructions of the board's build in this directory, under emulation");
    CLI11_PARSE(app, argc, argv);
    rig::enterOwnNetwork();
    Table table;
    if (budget) {
        judgeBudget(table);
        return table.allKept() ? 0 : 1;
    }
    const std::pair<const char*, void (*)(Table&)> groups[] = {
        {"delays", measureDelays}, {"speed", measureFullSpeed}, {"mice", measureMice},
        {"logs", measureLogs},     {"costs", measureCosts},     {"rest", measureRest}};
    if (!arm.empty()) {
        measureArm(table, std::filesystem::absolute(arm).string());
    }
    for (const auto& [name, measure] : groups) {
        if (arm.empty() && (only.empty() || only == name)) {
            measure(table);
        }
    }
    table.print();
    return json.empty() || table.writeJson(json) ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) { return rig::runTool("tavrik-bench", run, argc, argv); }
