#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

#include "rig/world.h"

/// A console with the daemon on it. Unless a test changes `plan` before its first use of the world:
/// keyboard event0, mouse event1, and a wall of two screens with two boxes each. Everything is torn
/// down with the test, which fails if the daemon ended or a sanitizer spoke.
class Console : public ::testing::Test {
 protected:
    static constexpr int kKeyboard = 0;
    static constexpr int kMouse = 1;
    static constexpr const char* kFirstBox = "127.0.0.31";  ///< in control after the start
    static constexpr rig::Milliseconds kLimit{3000};        ///< for everything that has to come

    rig::Plan plan = rig::usualPlan();
    bool endsByDesign = false;  ///< the test ends the daemon itself

    /// Made from `plan` at the first call.
    rig::World& world();
    rig::Board& board() { return world().board; }
    rig::Daemon& daemon() { return world().daemon(); }
    rig::Box& box(const std::string& address) { return world().box(address); }

    /// Starts the daemon and waits until it serves the devices. Fails the test when it does not.
    void start();

    /// The next report at the box reads so; the daemon's next such line.
    void expectReport(const std::string& address, std::string_view text);
    void expectLine(std::string_view text);

    /// Sends a command to the daemon.
    void send(std::string_view command) { world().command(command); }

    void TearDown() override;

 private:
    std::unique_ptr<rig::World> world_;
};
