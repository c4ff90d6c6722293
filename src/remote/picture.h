#pragma once

#include <cstdint>

/// What the input boxes tell about their picture, and what is made of it.

/// Asks the box in control through InputSocket, waits at most 20 ms for its answer and takes it
/// over whole, with its lines. Input and control threads.
void getChipVersion();

/// The periodic question through InputViSocket: silent without an answer, and user-list boxes are
/// not asked. Screen-information thread.
void TimegetChipVersion();

/// `value` times `ratio`, truncated towards zero and held within 32 bits. Pure.
std::int32_t scaleTruncated(std::int32_t value, float ratio);
