#pragma once

#include <cstdint>

/// The pause that lets a box take a key report before the next one, in microseconds.
inline constexpr std::int64_t kAfterKeyMicroseconds = 10'000;
