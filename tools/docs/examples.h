#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "capture/datagram.h"

namespace docs {

/// A page with its examples made anew.
struct Page {
    std::string text;
    std::vector<std::string> problems;  ///< what it lacks
};

/// An example is a comment in the page that names a datagram as tavrikctl tells it,
/// "<!-- lights: lights caps on num off -->", and the block of code behind it, which is written
/// from the first such datagram of `captured`. "<!-- never: notice PREVIEWQUIT -->" says that a
/// message never leaves. A problem is an example that was not captured, a message that leaves
/// though it never does, and a message of the wire that has no comment at all. Pure.
Page withExamples(std::string_view page, const std::vector<capture::Datagram>& captured);

}  // namespace docs
