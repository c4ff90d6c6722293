#pragma once

#include <algorithm>
#include <array>
#include <string_view>

/// Dotted IPv4 text, or a map name (address, optionally "-" and a port offset), in the fixed buffer
/// of 20 characters that the whole system uses. Always NUL-terminated, unused bytes always zero.
class AddressText {
 public:
    static constexpr std::size_t kSize = 20;
    static constexpr std::string_view kNone = "0.0.0.0";
    static constexpr std::string_view kThisMachine = "127.0.0.1";

    constexpr AddressText() = default;
    constexpr explicit AddressText(std::string_view text) { assign(text); }

    /// Stores `text` up to its first NUL, cut to 19 characters. Returns false when it had to be
    /// cut.
    constexpr bool assign(std::string_view text) {
        text = text.substr(0, text.find('\0'));
        bytes_.fill('\0');
        std::copy_n(text.begin(), std::min(text.size(), kSize - 1), bytes_.begin());
        return fits(text);
    }

    static constexpr bool fits(std::string_view text) { return text.size() < kSize; }

    constexpr const char* c_str() const { return bytes_.data(); }
    constexpr std::string_view view() const { return {bytes_.data()}; }
    constexpr bool empty() const { return bytes_[0] == '\0'; }

    /// True for "0.0.0.0" and for the empty text: no box is meant, nothing is sent there.
    constexpr bool isNone() const { return empty() || view() == kNone; }

    friend constexpr bool operator==(const AddressText&, const AddressText&) = default;

 private:
    std::array<char, kSize> bytes_{};
};
