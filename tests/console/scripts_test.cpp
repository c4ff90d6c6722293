#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iostream>

#include "rig/script.h"

namespace fs = std::filesystem;

namespace {

std::vector<std::string> scripts() {
    std::vector<std::string> found;
    for (const auto& entry : fs::directory_iterator(CONSOLE_SCRIPTS)) {
        if (entry.path().extension() == ".script") {
            found.push_back(entry.path().stem().string());
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

class Script : public testing::TestWithParam<std::string> {};

TEST_P(Script, GoesAsWritten) {
    const auto parsed = rig::loadScript(fs::path(CONSOLE_SCRIPTS) / (GetParam() + ".script"));
    ASSERT_TRUE(parsed.script) << parsed.problem;
    rig::Plan plan = parsed.script->plan;
    plan.virtualClock = true;
    rig::World world(plan);
    for (const std::string& fault : runScript(*parsed.script, world)) {
        ADD_FAILURE() << fault;
    }
    if (HasFailure()) {
        std::cout << "The daemon's lines:\n";
        for (const std::string& line : world.daemon().lines()) {
            std::cout << line << "\n";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Golden, Script, testing::ValuesIn(scripts()),
                         [](const auto& script) { return script.param; });

}  // namespace
