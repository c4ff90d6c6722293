#pragma once

#include <optional>
#include <string>
#include <string_view>

/// What an installer meant with a text that the daemon does not take as it stands. All pure.

namespace ctl {

struct MeantSetting {
    std::optional<unsigned> index;  ///< nothing: a map line without its number
    std::string value;
};

/// The setting that a line is, or is meant to be: other cases, blanks, ":" for "=", a map line's
/// "=" left out, a byte order mark. Nothing when it begins with no setting's name.
std::optional<MeantSetting> meantSetting(std::string_view line);

/// A map line without blanks, with "#" between entries and "," between fields, and without fourth
/// fields.
std::string meantMapLine(std::string_view line);

/// The text without NUL bytes, byte order marks and carriage returns at line ends: UTF-16 of plain
/// letters becomes plain.
std::string plainText(std::string_view text);

inline constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

}  // namespace ctl
