#include "remote/box_reply.h"

#include <algorithm>
#include <string>
#include <vector>

#include "base/text.h"
#include "remote/wire_text.h"

namespace {

std::optional<std::string_view> valueOf(std::string_view text, std::string_view key) {
    const std::size_t at = text.find(key);
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    return text.substr(at + key.size());
}

std::optional<ReplyNumber> numberOf(std::string_view text, std::string_view key) {
    const auto rest = valueOf(text, key);
    if (!rest) {
        return std::nullopt;
    }
    const std::string_view digits = rest->substr(0, std::min<std::size_t>(rest->find('&'), 4));
    const bool ended = rest->size() > digits.size() && (*rest)[digits.size()] == '&';
    return ReplyNumber{str2int(std::string(digits)), digits.size() == 4 && !ended};
}

std::optional<PointerMode> modeOf(std::string_view text) {
    const auto rest = valueOf(text, wire::kModeKey);
    if (!rest) {
        return std::nullopt;
    }
    const std::string_view word = rest->substr(0, std::min<std::size_t>(rest->find('&'), 4));
    if (word == wire::kRelativeMode) {
        return PointerMode::kRelative;
    }
    return word == wire::kAbsoluteMode ? PointerMode::kAbsolute : PointerMode::kUnchanged;
}

}  // namespace

unsigned GetViNum(const char* address) {
    std::vector<std::string> parts;
    SplitString(address, parts, ".");
    if (parts.size() != 4) {
        return 0;
    }
    const std::int32_t last = str2int(parts[3]);
    return last >= 1 && last <= 254 ? static_cast<unsigned>(last) : 0;
}

BoxReply parseBoxReply(std::string_view text) {
    return {numberOf(text, wire::kWidthKey), numberOf(text, wire::kHeightKey), modeOf(text)};
}
