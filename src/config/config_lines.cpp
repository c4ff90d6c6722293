#include "config/config_lines.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <limits>
#include <optional>
#include <set>
#include <unordered_set>

namespace {

constexpr std::array<std::string_view, kFirstMapIndex> kFixedKeys = {
    "kUdpServerPort=", "kActKeyEvent=", "kHotkeymap=", "kHotCmd0=",
    "kHotCmd1=",       "kHotCmd2=",     "kOutNum="};
constexpr std::string_view kMapKey = "kOutIpmap";

/// The setting whose "kOutIpmap%d" is the end of `head`. The number has to stand as it is written:
/// "kOutIpmap05" is nobody's key.
std::optional<unsigned> mapIndexAtEnd(std::string_view head) {
    constexpr std::size_t kMaxDigits = 4;
    std::size_t digits = 0;
    while (digits < head.size() && digits <= kMaxDigits && head[head.size() - 1 - digits] >= '0' &&
           head[head.size() - 1 - digits] <= '9') {
        ++digits;
    }
    const std::string_view number = head.substr(head.size() - digits);
    head.remove_suffix(digits);
    if (digits == 0 || digits > kMaxDigits || (digits > 1 && number[0] == '0') ||
        !head.ends_with(kMapKey)) {
        return std::nullopt;
    }
    unsigned line = 0;
    std::from_chars(number.data(), number.data() + number.size(), line);
    const unsigned index = kFirstMapIndex + line;
    return index < kSettingCount ? std::optional(index) : std::nullopt;
}

/// The setting whose key is the end of `head`, which itself ends in "=".
std::optional<unsigned> indexAtEnd(std::string_view head) {
    const auto* const key = std::find_if(kFixedKeys.begin(), kFixedKeys.end(),
                                         [head](std::string_view k) { return head.ends_with(k); });
    if (key != kFixedKeys.end()) {
        return static_cast<unsigned>(key - kFixedKeys.begin());
    }
    head.remove_suffix(1);
    return mapIndexAtEnd(head);
}

/// Calls `use` with each line, without what ends it.
template <class Use>
void forEachLine(std::string_view text, Use use) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        use(line);
    }
}

/// The rest of the line behind the key, for every setting that has one.
using Found = std::vector<std::optional<std::string_view>>;

Found findIn(std::string_view text) {
    Found found(kSettingCount);
    forEachLine(text, [&found](std::string_view line) {
        if (isComment(line)) {
            return;
        }
        for (std::size_t at = line.find('='); at != line.npos; at = line.find('=', at + 1)) {
            const auto index = indexAtEnd(line.substr(0, at + 1));
            if (index && !found[*index]) {
                found[*index] = line.substr(at + 1);
            }
        }
    });
    return found;
}

std::string nameOf(unsigned index) {
    std::string name = settingKey(index);
    name.pop_back();
    return name;
}

/// A line as it can stand in another.
std::string quoted(std::string_view line) {
    constexpr std::size_t kMost = 60;
    const bool cut = line.size() > kMost;
    return '"' + std::string(line.substr(0, kMost)) + (cut ? "..." : "") + '"';
}

/// The first setting whose key no line has; kSettingCount when there is none.
unsigned stopOf(const Found& found) {
    const auto missing = [](const auto& value) { return !value; };
    return static_cast<unsigned>(std::ranges::find_if(found, missing) - found.begin());
}

/// What reading leaves out because a key is missing, in words.
std::string behindTheStop(const LostLines& lost) {
    return lost.behind.empty()
               ? ""
               : "no " + quoted(settingKey(lost.stop)) + ", so " +
                     linesAre(nameOf(lost.behind.front()), lost.behind.size()) + " not used";
}

/// The setting that `line` is; nothing when it is none, or more than that.
std::optional<unsigned> settingOf(std::string_view line) {
    const std::size_t equals = line.find('=');
    const auto index = equals == line.npos ? std::nullopt : indexAtEnd(line.substr(0, equals + 1));
    return index && line.starts_with(settingKey(*index)) ? index : std::nullopt;
}

}  // namespace

bool isComment(std::string_view line) {
    return !line.empty() && (line[0] == '*' || line[0] == '!' || line[0] == ';');
}

std::string settingKey(unsigned index) {
    if (index < kFirstMapIndex) {
        return std::string(kFixedKeys[index]);
    }
    return std::string(kMapKey) + std::to_string(index - kFirstMapIndex) + "=";
}

std::vector<std::string_view> settingsIn(std::string_view text) {
    std::vector<std::string_view> values;
    for (const auto& value : findIn(text)) {
        if (!value) {
            break;
        }
        values.push_back(*value);
    }
    return values;
}

std::string linesAre(const std::string& first, std::size_t count) {
    if (count == 1) {
        return first + " is";
    }
    return first + " and " + std::to_string(count - 1) +
           (count == 2 ? " more line are" : " more lines are");
}

LostLines lostLines(std::string_view text, std::string_view saved) {
    LostLines lost;
    lost.stop = stopOf(findIn(text));
    std::set<unsigned> behind;
    std::unordered_set<std::string_view> kept;
    forEachLine(saved, [&kept](std::string_view line) { kept.insert(line); });
    std::size_t number = 0;
    forEachLine(text, [&](std::string_view line) {
        ++number;
        const auto setting = settingOf(line);
        const bool saysNothing =
            line.find_first_not_of(" \t") == line.npos || (setting && line == settingKey(*setting));
        if (!saysNothing && !kept.contains(line)) {
            lost.lines.push_back({number, line, setting});
            if (setting && *setting >= lost.stop) {
                behind.insert(*setting);
            }
        }
    });
    lost.behind.assign(behind.begin(), behind.end());
    return lost;
}

std::string notCarriedOver(std::string_view text, std::string_view saved) {
    const LostLines lost = lostLines(text, saved);
    std::string why = behindTheStop(lost);
    // A setting behind the stop is told as such.
    const auto isUntold = [&lost](const LostLine& line) {
        return !line.setting || *line.setting < lost.stop;
    };
    const auto first = std::ranges::find_if(lost.lines, isUntold);
    if (first != lost.lines.end()) {
        const auto count = static_cast<std::size_t>(std::ranges::count_if(lost.lines, isUntold));
        why += (why.empty() ? "" : "; ") + linesAre(quoted(first->text), count) + " not kept";
    }
    return why;
}

std::int32_t settingNumber(const std::string& value) {
    using Limits = std::numeric_limits<std::int32_t>;
    const long long number = std::strtoll(value.c_str(), nullptr, 10);
    return static_cast<std::int32_t>(std::clamp<long long>(number, Limits::min(), Limits::max()));
}

std::string settingsText(const std::vector<std::string>& values) {
    std::string text;
    for (unsigned index = 0; index < values.size(); ++index) {
        if (index >= kAlwaysWritten && values[index].empty()) {
            break;
        }
        text += settingKey(index) + values[index] + '\n';
    }
    return text;
}
