#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace rig {

/// What a person who drives the console wants to see all the time, as the boxes and the OSD tell
/// it. One thread at a time.
class Status {
 public:
    /// A datagram: `name` as World's observer has it, `text` in words.
    void saw(std::string_view name, std::string_view text);

    /// A line of the daemon.
    void saw(std::string_view line);

    /// "127.0.0.31 | pointer 412,300 | held LEFTSHIFT | computer"
    std::string line() const;
    const std::string& mode() const { return mode_; }

 private:
    std::string box_ = "no box yet";
    std::string pointer_ = "-";
    std::string held_ = "nothing";
    std::string mode_ = "computer";
};

}  // namespace rig
