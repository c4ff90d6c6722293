#include "console.h"

namespace {

void expectNext(rig::Box& box, const std::string& name, std::string_view text,
                const rig::World& world, rig::Milliseconds limit) {
    const auto report = box.next(limit);
    if (!report) {
        ADD_FAILURE() << name << ": expected " << text << ", got nothing; elsewhere: "
                      << ::testing::PrintToString(world.leftovers());
        return;
    }
    EXPECT_EQ(report->text, text) << "at " << name;
}

}  // namespace

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
    expectNext(box(address), "box " + address, text, world(), kLimit);
}

void Console::expectOsd(std::uint16_t port, std::string_view text) {
    expectNext(world().osd(port), "osd " + std::to_string(port), text, world(), kLimit);
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
