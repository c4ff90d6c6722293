#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The settings file's text: one line a setting, key name with its "=", then the value.
///
/// | index     | key                     | default |
/// |-----------|-------------------------|---------|
/// | 0         | kUdpServerPort          | 80      |
/// | 1         | kActKeyEvent            |         |
/// | 2         | kHotkeymap              |         |
/// | 3 to 5    | kHotCmd0 to kHotCmd2    |         |
/// | 6         | kOutNum                 | 0       |
/// | 7 to 4095 | kOutIpmap0 to 4088      |         |
///
/// All functions are pure and may be called from any thread.

inline constexpr unsigned kServerPortIndex = 0;
inline constexpr unsigned kActKeyEventIndex = 1;
inline constexpr unsigned kHotkeyMapIndex = 2;
inline constexpr unsigned kOutNumIndex = 6;
inline constexpr unsigned kFirstMapIndex = 7;
inline constexpr unsigned kSettingCount = 4096;

/// Settings below this index are always written; from it on the first empty value ends the file.
inline constexpr unsigned kAlwaysWritten = 23;

/// The largest settings file, and the largest sum of its values, that is taken.
inline constexpr std::size_t kSettingsLimit = std::size_t{16} << 20;

/// The key name of `index` (0 to 4095) with its "=".
std::string settingKey(unsigned index);

/// What `text` says: element i is the rest of the line behind the key of setting i (perhaps empty).
/// The list ends before the first setting whose key no line has.
///
/// A key's line is the first that is no comment and contains the key anywhere; the rest begins
/// behind the key's first occurrence in it. One scan, whatever the number of lines. The views point
/// into `text`.
std::vector<std::string_view> settingsIn(std::string_view text);

/// A line that a file does not carry over as it stands. Blank lines and empty settings are none.
struct LostLine {
    std::size_t number = 0;  ///< from 1
    std::string_view text;
    std::optional<unsigned> setting;  ///< the setting that it is, when it is one and nothing more
};

struct LostLines {
    unsigned stop = kSettingCount;  ///< the first setting whose key no line has
    std::vector<unsigned> behind;   ///< settings with a value that are not read for that
    std::vector<LostLine> lines;    ///< among them those behind the stop
};

/// What a file that holds `saved` would not carry over of `text`: settings behind the one where
/// reading stops, comments, lines that are no settings, what stands before a key. The views point
/// into `text`.
LostLines lostLines(std::string_view text, std::string_view saved);

/// The same in words; empty when it is nothing.
std::string notCarriedOver(std::string_view text, std::string_view saved);

/// Whether a line of the file is a comment: it begins with "*", "!" or ";".
bool isComment(std::string_view line);

/// "NAME is" or "NAME and N more lines are", as the first words of what becomes of so many lines.
std::string linesAre(const std::string& first, std::size_t count);

/// The decimal number at the start of a value (0 without one), held within 32 bits.
std::int32_t settingNumber(const std::string& value);

/// The lines that `values` (4096 of them) are saved and printed as.
std::string settingsText(const std::vector<std::string>& values);
