#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>

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

std::string testName(const testing::TestParamInfo<std::string>& script) {
    std::string name = script.param;
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name;
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
        std::string lines;
        for (const std::string& line : world.daemon().lines()) {
            lines += line + "\n";
        }
        std::cout << "The daemon's lines:\n" << lines;
    }
}

INSTANTIATE_TEST_SUITE_P(Golden, Script, testing::ValuesIn(scripts()), testName);

}  // namespace
