#pragma once

#include <functional>

/// Called before a thread that holds no guard takes one.
inline std::function<void()> beforeGuard;
