#pragma once

#include <cstdint>

#include "input/rule_state.h"
#include "input/sink.h"

/// The pause that lets a box take a key report before the next one, in microseconds.
inline constexpr std::int64_t kAfterKeyMicroseconds = 10'000;

/// Tells the box the keys as they are after a press. If the OSD was opened meanwhile by a command,
/// their release will not go there: what is down is let go of at once. Input thread.
void forwardPress(const RuleState& state, Sink& sink);
