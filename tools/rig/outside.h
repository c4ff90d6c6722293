#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "base/descriptor.h"

namespace rig {

/// Somebody else's program, started through the shell, and the lines that it prints. It ends with
/// this object, or with the process that made it. One thread at a time.
class OutsideProgram {
 public:
    /// Throws std::system_error when it cannot be started.
    explicit OutsideProgram(const std::string& command);
    ~OutsideProgram();
    OutsideProgram(const OutsideProgram&) = delete;
    OutsideProgram& operator=(const OutsideProgram&) = delete;

    int descriptor() const { return output_; }  ///< readable when lines() has something to do
    bool hasEnded() const { return hasEnded_; }
    /// The lines that are whole by now, without their ends; reads once.
    std::vector<std::string> lines();
    /// Takes the first line. False when none comes in that time, or none at all.
    bool waitForLine(int timeoutMs);

 private:
    Descriptor output_{-1};
    pid_t pid_ = -1;
    std::string partial_;
    bool hasEnded_ = false;
};

}  // namespace rig
