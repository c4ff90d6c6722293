#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "base/inputevent.h"

/// Where key reports go. Input thread.

/// To the current input box in the form it takes (user-list form or binary); nothing to "0.0.0.0".
void sendKeyReport(std::span<const std::uint8_t> report);

/// The pause that lets a box take a report before the next one.
inline constexpr std::int64_t kAfterKeyMicroseconds = 10'000;

/// The 11-byte keyboard report to the OSD process of this console.
void sendKeysToLocalOsd(std::span<const std::uint8_t> report);

/// A command to the OSD process of this console.
void sendLocalOsd(std::string_view command);

/// A command to the output box, where the OSD is not on this console.
void sendOutputOsd(std::string_view command);
