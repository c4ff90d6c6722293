#pragma once

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "rig/script.h"

/// What the two halves of the script parser share. Pure.
namespace rig {

inline constexpr std::string_view kBlanks = " \t\r";

inline std::string_view trim(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// Takes the first word off `rest`.
inline std::string_view takeWord(std::string_view& rest) {
    const std::string_view word = rest.substr(0, rest.find_first_of(kBlanks));
    rest = trim(rest.substr(word.size()));
    return word;
}

template <class T>
std::optional<T> number(std::string_view text) {
    T value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return value;
}

/// The text between quotation marks, where blanks at its ends matter; `\n` becomes a line feed.
inline std::string unquote(std::string_view text) {
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"') {
        text = text.substr(1, text.size() - 2);
    }
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool feed = text.substr(i).starts_with("\\n");
        result += feed ? '\n' : text[i];
        i += feed ? 1 : 0;
    }
    return result;
}

inline std::optional<int> nodeNumber(std::string_view text) {
    constexpr std::string_view kNode = "event";
    return text.starts_with(kNode) ? number<int>(text.substr(kNode.size())) : std::nullopt;
}

template <class Rows>
const auto* find(const Rows& rows, std::string_view word) {
    const auto* at = std::find_if(std::begin(rows), std::end(rows),
                                  [word](const auto& row) { return row.word == word; });
    return at == std::end(rows) ? nullptr : at;
}

/// The events of a line such as "KEY_A down; SYN; event3: REL_X -5". Without a node's name an event
/// goes to the plan's first device of the kind that has such events, the end of a packet (SYN) to
/// the device of the event before it, which is `lastNode` for the line's first. Nothing when one
/// makes no sense.
std::optional<std::vector<ScriptEvent>> parseEvents(std::string_view text, const Plan& plan,
                                                    int lastNode);

}  // namespace rig
