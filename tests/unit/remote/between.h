#pragma once

#include <functional>
#include <string_view>

#include "simulated/guards.h"

/// What comes between two steps of a thread, played without a second thread and without luck.

/// Called with the socket and the bytes of every datagram before it leaves.
inline std::function<void(int fd, std::string_view bytes)> beforeSend;

/// As long as it is not 0, no datagram leaves: sendto fails with this errno.
inline int sendError = 0;

/// What a keyboard tells of its lights; below 0: the kernel answers.
inline int lightsOfKeyboard = -1;

/// Runs `first`, and `second` in between at the `moment`th time (from 0) that `first` takes a guard
/// or sends. False when it has no such moment.
bool interrupted(int moment, const std::function<void()>& first,
                 const std::function<void()>& second);
