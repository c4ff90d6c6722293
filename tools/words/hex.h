#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace words {

/// "57 ab 01".
std::string hexText(std::span<const std::uint8_t> bytes);

/// The bytes of a text of pairs of hex digits; blanks, colons and "0x" between them do not count.
/// Nothing when something else stands there.
std::optional<std::vector<std::uint8_t>> bytesOfHex(std::string_view text);

}  // namespace words
