#pragma once

#include <string_view>

#include "words/message.h"

namespace words {

inline constexpr const char* kLightsName = "lights";
inline constexpr const char* kQueryName = "query";
inline constexpr const char* kAnswerName = "answer";
inline constexpr const char* kCommandName = "command";
inline constexpr const char* kNoticeName = "notice";
inline constexpr const char* kStatusName = "status";

/// Every name that decodeText gives when the ports are known.
std::vector<std::string> textNames();

/// Fills `message` when the text, all of it printable but for line feeds, is one of this wire;
/// leaves it alone otherwise. Words are set for the lights alone: the others say themselves.
bool decodeText(std::string_view text, Ports ports, Message& message);

}  // namespace words
