#pragma once

#include <optional>
#include <string>
#include <vector>

#include "remote/wire_text.h"

namespace ctl {

/// What is sent to a console, or why nothing is.
struct Orders {
    std::vector<std::string> texts;  ///< a datagram each
    std::string problem;             ///< empty when there is none
};

/// The commands that take no settings. `words` is what stands behind the command's name: "on" or
/// "off", two numbers, or nothing. Pure.
Orders simpleOrder(const std::string& name, const std::vector<std::string>& words);

/// "relation" for the screens, "details" for the cells of every screen (of `screen` alone when it
/// is not empty), as the daemon's own loading makes them of `settings`; a file that it does not
/// take whole is refused. runLoading's rules for threads and failures hold.
Orders relationOrder(const std::string& settings);
Orders detailsOrder(const std::string& settings, const std::string& screen);

/// "hotkey" for entries as CTRL+F1 (a leading LEFT, as the settings have it, is left out: the
/// console puts it there). Pure.
Orders hotkeyOrder(const std::vector<std::string>& entries);

/// The settings file that has these map lines and nothing else.
std::string settingsWith(const std::vector<std::string>& mapLines);
/// The entries of kHotkeymap in the text of a settings file.
std::vector<std::string> hotkeysIn(const std::string& settings);

/// The lines of `settings` that a command of that name replaces.
std::string replacedBy(const std::string& name, const std::string& settings);

}  // namespace ctl
