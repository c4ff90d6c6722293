#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

/// What the input boxes tell about themselves: picture size and pointer mode.

/// The last octet of a dotted address when it lies in 1..254 and the text has exactly 4 parts,
/// otherwise 0. Any thread.
unsigned GetViNum(const char* address);

/// One number of a reply.
struct ReplyNumber {
    std::int32_t value = 0;
    bool overlong = false;  ///< 4 characters that no "&" ends
};

enum class PointerMode : std::uint8_t { kUnchanged, kAbsolute, kRelative };

/// A box's reply: text holding "vi_w=" width, "vi_h=" height and "kvm=" mode in any order.
struct BoxReply {
    std::optional<ReplyNumber> width;
    std::optional<ReplyNumber> height;
    std::optional<PointerMode> mode;
};

/// Reads a value as at most 4 characters. Pure.
BoxReply parseBoxReply(std::string_view text);
