#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace rig {

/// What every program around the rig begins with: a node whose reader just went takes no record and
/// that is all, output comes a line at a time, and an exception is one line on the error stream and
/// status 1. Otherwise the status is that of `run`.
int runTool(const char* name, int (*run)(int argc, char** argv), int argc, char** argv);

/// The value below which `share` (0 to 1) of the values lie; 0 when there is none.
inline double percentile(std::vector<double> values, double share) {
    if (values.empty()) {
        return 0;
    }
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1))];
}

}  // namespace rig
