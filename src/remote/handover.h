#pragma once

#include <cstdint>
#include <optional>

#include "base/function_ref.h"
#include "remote/box_in_control.h"

/// Control passes on, whoever asks: an edge, Ctrl and an arrow, a command, the listener's start,
/// the loss of devices, another port, the end of the process.
///
///   old value ──► next ──► new value          one step; what is down at the old box is taken out
///       └──────► keys up, buttons up ──► the old box, in each form in which something is down
///
/// Any thread may call any of these; none prints.

/// The new value from the old one; nothing when the caller has to look again. It runs under the
/// guard and may look at currentInfo, no more.
using NextBox = FunctionRef<std::optional<BoxInControl>(const BoxInControl& old)>;

enum class LetGo : std::uint8_t {
    kWhenControlMoves,  ///< the same box at the same port goes on with what is down
    kAlways,            ///< whoever has control afterwards
};

/// Stores `next(old)` and lets go of the old box. False when `next` gave nothing. Nothing changes
/// any more once the process ends, which counts as done.
bool handOver(NextBox next, LetGo when = LetGo::kWhenControlMoves);

/// What is down at the box in control is let go of: its devices are gone.
void letGoOfEverything();

/// The port of the input boxes, 0 to 65535. What is down is let go of at the old one.
void setInputPort(std::int32_t port);

/// The address of the output box in use.
void setOutIp(const AddressText& ip);

/// The name of the box in control is forgotten until the next selection.
void forgetName();

/// No box has control.
void stopControl();

/// The process ends: what is down is let go of, and no box gets control any more. Returns when
/// every sender is done, or after `microseconds`.
void endControl(std::int64_t microseconds);
