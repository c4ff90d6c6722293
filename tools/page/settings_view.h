#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "rig/world.h"

namespace page {

/// What the editor shows of a settings file: `check`'s findings and the drawing of the wall.
/// ctl::check's rules for threads hold.
nlohmann::json settingsView(const std::string& settings);

/// A console at the first screen of a settings file's wall.
struct SettingsPlan {
    rig::Plan plan;
    std::string problem;  ///< why there is none; empty when there is one
};

/// `users`: addresses of the user list. `everyAddress`: all may stand in the wall; otherwise those
/// of 127.0.0.0/8 alone. At most 64 boxes. ctl::check's rules for threads hold.
SettingsPlan planOf(const std::string& settings, const std::vector<std::string>& users,
                    bool everyAddress);

/// The first comment of a script.
std::string captionOf(const std::string& folder, const std::string& name);

/// A settings file for a wall of screens, each split into cells: "2x1" and "2x1".
/// Empty when the sizes make no sense.
std::string wallOfSize(const std::string& screens, const std::string& cells);

}  // namespace page
