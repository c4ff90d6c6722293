#pragma once

#include <string>
#include <string_view>

#include "ctl/check.h"

namespace ctl {

/// As a compiler tells it: "FILE:LINE: error: ..." with the text and what to write, and one line
/// over all. Control bytes are shown in digits.
std::string asText(const Checked& checked, const std::string& file, bool colours);

/// {"file", "wall", "clean", "findings": [{"line", "severity", "message", "text", "advice"}]}
std::string asJson(const Checked& checked, const std::string& file);

/// The lines that differ, each behind "-" or "+"; what is equal around them is left out.
std::string difference(std::string_view before, std::string_view after);

}  // namespace ctl
