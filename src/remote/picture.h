#pragma once

#include <cstdint>
#include <optional>

#include "base/address_text.h"

/// What the input boxes tell about their picture, and what is made of it.

/// Asks the box in control through InputSocket, waits at most 20 ms for its answer and takes it
/// over whole, with its lines. Input and control threads.
void getChipVersion();

/// The periodic question through InputViSocket: silent without an answer, and user-list boxes are
/// not asked. Screen-information thread.
void TimegetChipVersion();

/// What became of a periodic question.
struct BoxAsked {
    AddressText box;
    bool answered = false;
};
/// The same; nothing when no box was asked.
std::optional<BoxAsked> askPeriodically();

/// `value` times `ratio`, truncated towards zero and held within 32 bits. Pure.
std::int32_t scaleTruncated(std::int32_t value, float ratio);
