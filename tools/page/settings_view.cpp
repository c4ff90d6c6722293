#include "page/settings_view.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "base/file_start.h"
#include "ctl/check.h"
#include "ctl/loading_run.h"
#include "ctl/orders.h"
#include "ctl/show.h"
#include "ctl/wall_to_draw.h"

namespace page {

using nlohmann::json;

namespace {

constexpr int kMostBoxes = 64;

/// Nothing but "2x3", each number from 1 to 8.
bool parseSize(const std::string& text, int& across, int& down) {
    const char* const end = text.data() + text.size();
    const auto [between, first] = std::from_chars(text.data(), end, across);
    if (first != std::errc{} || between == end || *between != 'x') {
        return false;
    }
    const auto [rest, second] = std::from_chars(between + 1, end, down);
    return second == std::errc{} && rest == end && across >= 1 && across <= 8 && down >= 1 &&
           down <= 8;
}

std::string entry(int x, int y, const std::string& name) {
    return std::to_string(x) + ',' + std::to_string(y) + ',' + name;
}

/// Why a box or a screen cannot stand there; empty when it can.
std::string problemOf(std::string_view name, bool everyAddress) {
    const std::string address(name.substr(0, name.find('-')));
    in_addr parsed{};
    if (inet_pton(AF_INET, address.c_str(), &parsed) != 1) {
        return address + " is no address.";
    }
    const bool isHere = address.starts_with("127.") || address == AddressText::kNone;
    return everyAddress || isHere
               ? ""
               : "Without a network of its own the wall may hold addresses of 127.0.0.0/8 alone, not " +
                     address + ".";
}

std::string firstScreen(const outInf& wall) {
    return wall.screens.empty() ? "" : std::string(wall.screens.begin()->second.name.view());
}

}  // namespace

json settingsView(const std::string& settings) {
    const std::string console = firstScreen(ctl::runLoading(settings, "").wall.wall);
    json view = json::parse(ctl::asJson(ctl::check(settings, console), ""));
    view["t"] = "checked";
    const drawing::Wall wall =
        ctl::wallToDraw(ctl::runLoading(settings, console).wall.wall, console);
    view["drawing"] = wall.empty() ? "" : drawing::asSvg(wall).value_or("");
    return view;
}

SettingsPlan planOf(const std::string& settings, const std::vector<std::string>& users,
                    bool everyAddress) {
    SettingsPlan made;
    made.plan.devices = {{rig::Kind::kKeyboard, 0, ""}, {rig::Kind::kMouse, 1, ""}};
    const ctl::LoadingRun run = ctl::runLoading(settings, "");
    const outInf& wall = run.wall.wall;
    int boxes = 0;
    for (const auto& [key, screen] : wall.screens) {
        std::vector<AddressText> names{screen.name};
        for (const auto& [at, cell] : screen.cells) {
            names.push_back(cell.name);
        }
        boxes += static_cast<int>(screen.cells.size());
        for (const AddressText& name : names) {
            if (std::ranges::find(users, name.view()) != users.end()) {
                made.plan.users.emplace_back(name.view());
            }
            made.problem =
                made.problem.empty() ? problemOf(name.view(), everyAddress) : made.problem;
        }
    }
    if (!made.problem.empty()) {
        return made;
    }
    if (wall.screens.empty() || boxes > kMostBoxes) {
        made.problem = wall.screens.empty() ? "There is no wall in these settings."
                                            : "The page shows walls of up to 64 boxes.";
        return made;
    }
    for (const std::string& line : run.wall.lines) {
        if (line.empty()) {
            break;
        }
        made.plan.wall.push_back(line);
    }
    for (const std::string& entry : ctl::hotkeysIn(run.saved)) {
        made.plan.settings["kHotkeymap"] += entry + '#';
    }
    made.plan.local = firstScreen(wall);
    return made;
}

std::string captionOf(const std::string& folder, const std::string& name) {
    constexpr std::size_t kEnough = 4096;
    const std::string text =
        readFileStart(std::filesystem::path(folder) / (name + ".script"), kEnough).text;
    return text.starts_with("# ") ? text.substr(2, text.find('\n') - 2) : name;
}

std::string wallOfSize(const std::string& screens, const std::string& cells) {
    int across = 0, down = 0, columns = 0, rows = 0;
    if (!parseSize(screens, across, down) || !parseSize(cells, columns, rows) ||
        across * down * columns * rows > kMostBoxes) {
        return "";
    }
    std::vector<std::string> lines;
    int box = 31;
    for (int y = 0; y < down; ++y) {
        for (int x = 0; x < across; ++x) {
            std::string line = entry(x, y, "127.0.1." + std::to_string(lines.size() + 20));
            for (int row = 0; row < rows; ++row) {
                for (int column = 0; column < columns; ++column) {
                    line += '#' + entry(column, row, "127.0.0." + std::to_string(box++));
                }
            }
            lines.push_back(line);
        }
    }
    return ctl::settingsWith(lines);
}

}  // namespace page
