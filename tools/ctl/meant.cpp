#include "ctl/meant.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <vector>

#include "base/text.h"
#include "config/config_lines.h"

namespace ctl {
namespace {

constexpr std::string_view kBlanks = " \t\r";

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == text.npos ? "" : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

bool beginsLike(std::string_view text, std::string_view name) {
    return text.size() >= name.size() &&
           std::equal(name.begin(), name.end(), text.begin(), [](unsigned char a, unsigned char b) {
               return std::tolower(a) == std::tolower(b);
           });
}

/// What stands behind "=" or ":"; nothing when `rest` begins with neither.
std::optional<std::string> valueIn(std::string_view rest) {
    rest = trimmed(rest);
    if (!rest.starts_with('=') && !rest.starts_with(':')) {
        return std::nullopt;
    }
    return std::string(trimmed(rest.substr(1)));
}

std::optional<MeantSetting> meantMap(std::string_view rest) {
    unsigned number = 0;
    const auto read = std::from_chars(rest.data(), rest.data() + rest.size(), number);
    const std::string_view behind(read.ptr,
                                  static_cast<std::size_t>(rest.data() + rest.size() - read.ptr));
    if (auto value = valueIn(behind)) {
        const bool isNumbered = read.ec == std::errc{} && number < kSettingCount - kFirstMapIndex;
        return MeantSetting{isNumbered ? std::optional(kFirstMapIndex + number) : std::nullopt,
                            *value};
    }
    if (behind.find(',') == behind.npos) {
        return std::nullopt;
    }
    const bool isField = behind.starts_with(',');  // then the number is the screen's column
    return MeantSetting{{}, std::string(trimmed(isField ? rest : behind))};
}

std::vector<std::string> split(std::string_view text, char delimiter) {
    std::vector<std::string> pieces;
    SplitString(std::string(text), pieces, std::string(1, delimiter));
    return pieces;
}

std::string joined(const std::vector<std::string>& pieces, char delimiter) {
    std::string text;
    for (const std::string& piece : pieces) {
        text += (text.empty() ? "" : std::string(1, delimiter)) + piece;
    }
    return text;
}

std::string meantEntry(std::string_view entry) {
    constexpr std::size_t kFields = 3;
    std::vector<std::string> fields = split(entry, ',');
    for (std::string& field : fields) {
        field = trimmed(field);
    }
    fields.resize(std::min(fields.size(), kFields));
    return joined(fields, ',');
}

/// The entries that ";" stands between, or one with "," in its place.
std::vector<std::string> withoutSemicolons(const std::string& piece) {
    const std::vector<std::string> parts = split(piece, ';');
    const auto isEntry = [](const std::string& part) { return std::ranges::count(part, ',') >= 2; };
    return parts.size() < 2 || std::ranges::all_of(parts, isEntry)
               ? parts
               : std::vector{joined(parts, ',')};
}

}  // namespace

std::optional<MeantSetting> meantSetting(std::string_view line) {
    if (line.starts_with(kByteOrderMark)) {
        line.remove_prefix(kByteOrderMark.size());
    }
    line = trimmed(line);
    constexpr std::string_view kMap = "kOutIpmap";
    if (beginsLike(line, kMap)) {
        return meantMap(line.substr(kMap.size()));
    }
    for (unsigned index = 0; index < kFirstMapIndex; ++index) {
        std::string name = settingKey(index);
        name.pop_back();
        if (beginsLike(line, name)) {
            auto value = valueIn(line.substr(name.size()));
            return value ? std::optional(MeantSetting{index, std::move(*value)}) : std::nullopt;
        }
    }
    return std::nullopt;
}

std::string meantMapLine(std::string_view line) {
    std::vector<std::string> entries;
    for (const std::string& piece : split(line, '#')) {
        for (const std::string& entry : withoutSemicolons(piece)) {
            if (!trimmed(entry).empty()) {
                entries.push_back(meantEntry(entry));
            }
        }
    }
    return joined(entries, '#');
}

std::string plainText(std::string_view text) {
    std::string plain;
    plain.reserve(text.size());
    if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")) {
        text.remove_prefix(2);
    }
    std::ranges::copy_if(text, std::back_inserter(plain), [](char c) { return c != '\0'; });
    if (plain.starts_with(kByteOrderMark)) {
        plain.erase(0, kByteOrderMark.size());
    }
    for (std::size_t at = plain.find("\r\n"); at != plain.npos; at = plain.find("\r\n", at)) {
        plain.erase(at, 1);
    }
    return plain;
}

}  // namespace ctl
