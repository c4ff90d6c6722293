#pragma once

#include "simulated/console.h"

namespace simulated {

/// The console that the doubles of the system's calls speak for; none: nothing arrives anywhere.
extern Console* running;

inline constexpr int kBoxPort = 80;         ///< of queries, and of reports without an offset
inline constexpr int kFirstFd = 1'000'000;  ///< of the keyboards; nobody opens it

}  // namespace simulated
