#pragma once

#include <string>
#include <string_view>

#include "config/config_lines.h"
#include "remote/wall_notes.h"

namespace ctl {

/// What the daemon's own start makes of a settings file.
struct LoadingRun {
    std::string refusal;  ///< the line that says why the file is not taken at all; else empty
    LostLines lost;       ///< views into the text that was run
    bool portTaken = true;
    std::string hotkeyProblem;  ///< why the hotkeys are refused; else empty
    std::string saved;          ///< the file as the start writes it back
    LoadedWall wall;
    WallFindings findings;

    /// A start keeps every line and takes every entry.
    bool takesEverything() const {
        return refusal.empty() && lost.lines.empty() && portTaken && hotkeyProblem.empty() &&
               findings.unkept.empty() && findings.unused.empty();
    }
};

/// Runs it on `text` in a scratch directory that is gone afterwards, for a console at `console`;
/// what a start prints is not shown. The process becomes that console: main thread, and no other
/// one that uses the daemon's state. Throws std::system_error when the machine refuses.
LoadingRun runLoading(std::string_view text, const std::string& console);

/// The console's own address as `netIni` (the text of net.ini) tells it; empty when it does not.
std::string consoleAddress(std::string_view netIni);

}  // namespace ctl
