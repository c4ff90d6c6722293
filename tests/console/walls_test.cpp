#include <linux/input-event-codes.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

#include "config/config_lines.h"
#include "console.h"

namespace {

namespace fs = std::filesystem;

/// A wall of docs/walls, and the ways over its edges: each a direction and the box that has control
/// then, the last number of its address with its port.
struct Walk {
    const char* name;
    std::vector<std::pair<char, const char*>> ways;
};

void PrintTo(const Walk& walk, std::ostream* out) { *out << walk.name; }

std::string textOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The same addresses on this machine.
std::string local(std::string text) {
    const std::string kSite = "192.168.1.", kHere = "127.0.0.";
    for (std::size_t at = text.find(kSite); at != std::string::npos; at = text.find(kSite)) {
        text.replace(at, kSite.size(), kHere);
    }
    return text;
}

class Wall : public Console, public ::testing::WithParamInterface<Walk> {
 protected:
    void SetUp() override {
        const std::string settings =
            local(textOf(walls() / (GetParam().name + std::string(".ini"))));
        plan.wall.clear();
        const auto values = settingsIn(settings);
        for (std::size_t i = kFirstMapIndex; i < values.size() && !values[i].empty(); ++i) {
            plan.wall.emplace_back(values[i]);
        }
        if (GetParam().name == std::string("user_list")) {
            plan.users = {"127.0.0.32", "127.0.0.33"};
        }
        for (int offset = 1; GetParam().name == std::string("row") && offset < 4; ++offset) {
            plan.boxes.push_back(
                {{"127.0.0.31", static_cast<std::uint16_t>(80 + offset)}, rig::kUsualAnswer});
        }
    }

    static fs::path walls() { return CONSOLE_WALLS; }

    /// Moves the pointer over that edge, from wherever it is on the picture.
    void cross(char way) {
        constexpr int kFar = 2000;
        const std::map<char, std::pair<int, int>> kWays{
            {'l', {-kFar, 0}}, {'r', {kFar, 0}}, {'u', {0, -kFar}}, {'d', {0, kFar}}};
        const auto [dx, dy] = kWays.at(way);
        board().move(kMouse, dx, dy);
    }

    /// The box that a key reaches now, as "31:80"; nothing else hears of it.
    std::string inControl() {
        board().key(kKeyboard, KEY_A, true);
        board().key(kKeyboard, KEY_A, false);
        const auto end = std::chrono::steady_clock::now() + kLimit;
        std::string found;
        while (found.empty() && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(rig::Milliseconds(5));
            found = whoGotTheKey();
        }
        if (!found.empty()) {
            rig::Box& box = world().box("127.0.0." + found.substr(0, found.find(':')));
            bool isDown = false;  // the release at an edge says "keys up" as well
            while (const auto report = box.next(kLimit)) {
                if (isDown && report->text.ends_with("keys up")) {
                    break;
                }
                isDown = isDown || report->text.ends_with("key down A");
            }
        }
        world().clear();
        return found;
    }

 private:
    std::string whoGotTheKey() {
        std::string who;
        for (int number = 31; number < 47; ++number) {
            const std::string address = "127.0.0." + std::to_string(number);
            for (const rig::Report& report :
                 world().hasBox(address) ? box(address).pending() : std::vector<rig::Report>{}) {
                if (report.text.ends_with("key down A")) {
                    who += std::to_string(number) + ":" + std::to_string(report.at.port);
                }
            }
        }
        return who;
    }
};

TEST_P(Wall, IsWalkedThroughEdgeByEdge) {
    start();
    world().clear();
    EXPECT_EQ(inControl(), "31:80");
    std::string way;
    for (const auto& [direction, expected] : GetParam().ways) {
        way += direction;
        cross(direction);
        EXPECT_EQ(inControl(), expected) << "after " << way;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Of, Wall,
    ::testing::Values(Walk{"one", {{'r', "31:80"}, {'l', "31:80"}, {'u', "31:80"}, {'d', "31:80"}}},
                      Walk{"square",
                           {{'r', "32:80"},
                            {'d', "34:80"},
                            {'l', "33:80"},
                            {'u', "31:80"},
                            {'u', "31:80"},
                            {'d', "33:80"},
                            {'r', "34:80"},
                            {'r', "34:80"}}},
                      Walk{"row",
                           {{'r', "31:81"},
                            {'r', "31:82"},
                            {'r', "31:83"},
                            {'r', "31:83"},
                            {'l', "31:82"},
                            {'d', "31:82"},
                            {'l', "31:81"},
                            {'l', "31:80"}}},
                      Walk{"split",
                           {{'r', "32:80"},
                            {'d', "35:80"},
                            {'r', "36:80"},
                            {'r', "44:80"},
                            {'u', "41:80"},
                            {'r', "42:80"},
                            {'r', "43:80"},
                            {'r', "43:80"},
                            {'d', "46:80"},
                            {'l', "45:80"},
                            {'l', "44:80"},
                            {'l', "36:80"},
                            {'u', "33:80"},
                            {'l', "32:80"},
                            {'l', "31:80"},
                            {'d', "34:80"}}},
                      Walk{"user_list",
                           {{'r', "32:2000"}, {'r', "33:2000"}, {'l', "32:2000"}, {'l', "31:80"}}}),
    [](const auto& walk) { return std::string(walk.param.name); });

}  // namespace
