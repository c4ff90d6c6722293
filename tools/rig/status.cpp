#include "rig/status.h"

namespace rig {
namespace {

/// What follows `start`; nothing when `text` does not begin with it.
std::optional<std::string_view> behind(std::string_view text, std::string_view start) {
    return text.starts_with(start) ? std::optional(text.substr(start.size())) : std::nullopt;
}

/// The mode that opens or closes with a notice or an order; nothing when it is none.
std::optional<std::string> modeOf(std::string_view text) {
    const std::size_t start = text.find("START");
    if (start != text.npos) {
        return std::string(text.substr(0, start));
    }
    return text.find("QUIT") != text.npos ? std::optional<std::string>("computer") : std::nullopt;
}

}  // namespace

void Status::saw(std::string_view name, std::string_view text) {
    if (const auto address = behind(name, "box ")) {
        box_ = *address;
    } else if (const auto mode = modeOf(text)) {
        mode_ = *mode;
    }
    if (text.starts_with("user ")) {
        text.remove_prefix(5);
    }
    if (const auto pointer = behind(text, "pointer ")) {
        pointer_ = pointer->substr(0, pointer->find(' '));
    }
    if (text == "keys up") {
        held_ = "nothing";
    }
    for (const std::string_view start : {"key down ", "modifiers "}) {
        if (const auto held = behind(text, start)) {
            held_ = *held;
        }
    }
}

void Status::saw(std::string_view line) {
    if (const auto order = behind(line, "osdSet ")) {
        mode_ = modeOf(*order).value_or(mode_);
    }
}

std::string Status::line() const {
    return box_ + " | pointer " + pointer_ + " | held " + held_ + " | " + mode_;
}

}  // namespace rig
