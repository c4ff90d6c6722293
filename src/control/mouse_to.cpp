#include "control/mouse_to.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace {

/// Takes a decimal integer from the front of `rest` as scanf's %d would, but refuses one that does
/// not fit.
bool takeInteger(std::string_view& rest, int& value) {
    rest.remove_prefix(std::min(rest.find_first_not_of(" \t\n\v\f\r"), rest.size()));
    std::string_view digits = rest;
    if (digits.starts_with('+') && !digits.starts_with("+-")) {
        digits.remove_prefix(1);
    }
    const auto [end, problem] = std::from_chars(digits.begin(), digits.end(), value);
    if (problem != std::errc{}) {
        return false;
    }
    rest = std::string_view(end, static_cast<std::size_t>(digits.end() - end));
    return true;
}

}  // namespace

void parseMouseTo(const std::string& text, int& x, int& y) {
    constexpr std::string_view kPrefix = "MTO:";
    std::string_view rest = text;
    if (!rest.starts_with(kPrefix)) {
        return;
    }
    rest.remove_prefix(kPrefix.size());
    if (!takeInteger(rest, x) || !rest.starts_with(',')) {
        return;
    }
    rest.remove_prefix(1);
    takeInteger(rest, y);
}
