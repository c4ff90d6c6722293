#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ctl {

enum class Severity : std::uint8_t {
    kError,    ///< a start does not take it
    kWarning,  ///< a start does not keep it, and nothing else changes
    kNote      ///< taken, and may surprise
};

struct Finding {
    std::size_t line = 0;  ///< from 1; 0: the whole file
    Severity severity = Severity::kError;
    std::string message;
    std::string text;    ///< as it stands there
    std::string advice;  ///< what to write in its place; empty when there is nothing to say
};

struct Checked {
    std::vector<Finding> findings;  ///< by line
    std::string wall;               ///< the wall in a line, as a start tells it
    bool takesEverything = false;   ///< a start keeps every line and takes every entry

    std::size_t count(Severity severity) const;
};

/// Every mistake in the text of a settings file for a console at `console` (empty: not known). What
/// counts is what the daemon's own start makes of it (runLoading, whose rules for threads and
/// failures hold). There is an error or a warning exactly when a start does not take everything.
Checked check(std::string_view text, const std::string& console);

/// The text of a file that `check` finds neither errors nor warnings in, with as much of `text` as
/// can be kept. Nothing when there is none.
std::optional<std::string> fixed(std::string_view text, const std::string& console);

}  // namespace ctl
