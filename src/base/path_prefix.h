#pragma once

#include <string>
#include <string_view>

/// The directory of `--root`: put before every absolute path that the daemon opens, so that it can
/// run unprivileged beside a real console. Empty in normal use.

/// Called once by main before any other thread exists.
void setPathPrefix(std::string directory);

/// `path` behind the prefix when it is absolute, unchanged when it is relative. Any thread.
std::string prefixedPath(std::string_view path);

/// True when `--root` was given: the daemon runs on a virtual board. Any thread.
bool hasPathPrefix();
