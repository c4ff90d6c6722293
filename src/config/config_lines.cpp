#include "config/config_lines.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <limits>
#include <optional>

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

bool isComment(std::string_view line) {
    return !line.empty() && (line[0] == '*' || line[0] == '!' || line[0] == ';');
}

}  // namespace

std::string settingKey(unsigned index) {
    if (index < kFirstMapIndex) {
        return std::string(kFixedKeys[index]);
    }
    return std::string(kMapKey) + std::to_string(index - kFirstMapIndex) + "=";
}

std::vector<std::string_view> settingsIn(std::string_view text) {
    std::vector<std::optional<std::string_view>> found(kSettingCount);
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        if (isComment(line)) {
            continue;
        }
        for (std::size_t at = line.find('='); at != line.npos; at = line.find('=', at + 1)) {
            const auto index = indexAtEnd(line.substr(0, at + 1));
            if (index && !found[*index]) {
                found[*index] = line.substr(at + 1);
            }
        }
    }
    std::vector<std::string_view> values;
    for (const auto& value : found) {
        if (!value) {
            break;
        }
        values.push_back(*value);
    }
    return values;
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
