#include "console.h"

rig::World& Console::world() {
    if (!world_) {
        world_ = std::make_unique<rig::World>(plan);
    }
    return *world_;
}

void Console::start() {
    if (const auto problem = world().start()) {
        FAIL() << *problem << "\nthe daemon's last lines:\n"
               << ::testing::PrintToString(daemon().lines()) << "\n"
               << ::testing::PrintToString(daemon().errorLines());
    }
}

void Console::expectReport(const std::string& address, std::string_view text) {
    const auto report = box(address).next(kLimit);
    EXPECT_EQ(report ? report->text : "nothing", text)
        << "at " << address << ", elsewhere: " << ::testing::PrintToString(world().leftovers());
}

void Console::expectLine(std::string_view text) {
    EXPECT_TRUE(daemon().waitForLine(text, kLimit)) << "no line " << text;
}

void Console::TearDown() {
    if (world_) {
        const bool ended = endsByDesign && !daemon().running();
        EXPECT_EQ(world_->accident(), ended ? "the daemon ended\n" : "");
    }
}
