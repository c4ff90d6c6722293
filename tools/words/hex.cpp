#include "words/hex.h"

#include <array>
#include <charconv>
#include <cstdio>

namespace words {

std::string hexText(std::span<const std::uint8_t> bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes) {
        std::array<char, 4> pair{};
        std::snprintf(pair.data(), pair.size(), "%02x", byte);
        text += (text.empty() ? "" : " ") + std::string(pair.data());
    }
    return text;
}

std::optional<std::vector<std::uint8_t>> bytesOfHex(std::string_view text) {
    std::vector<std::uint8_t> bytes;
    constexpr std::string_view kBetween = " \t\r\n:,";
    while (!text.empty()) {
        if (kBetween.find(text.front()) != std::string_view::npos) {
            text.remove_prefix(1);
        } else if (text.starts_with("0x")) {
            text.remove_prefix(2);
        } else {
            std::uint8_t byte = 0;
            const std::string_view pair = text.substr(0, 2);
            const auto [end, problem] = std::from_chars(pair.begin(), pair.end(), byte, 16);
            if (problem != std::errc{} || pair.size() < 2 || end != pair.end()) {
                return std::nullopt;
            }
            bytes.push_back(byte);
            text.remove_prefix(2);
        }
    }
    return bytes;
}

}  // namespace words
