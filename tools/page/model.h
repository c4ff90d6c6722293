#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "rig/board.h"
#include "rig/box.h"
#include "rig/status.h"
#include "words/message.h"

namespace page {

/// What one box was told, as its computer would show it.
struct BoxView {
    int width = 1920, height = 1080;
    std::string mode = "absolute";  ///< or relative, user list, silent
    std::optional<std::pair<int, int>> pointer;
    int buttons = 0;
    std::vector<std::string> keys;  ///< down, by their names
    bool capsLock = false, numLock = false;
    std::string typed;               ///< the last characters
    int lastKey = 0;                 ///< HID usage
    unsigned clicks = 0, wheel = 0;  ///< so many so far
};

/// One datagram of the list.
struct Seen {
    unsigned long number = 0;
    std::string to;  ///< "box 127.0.0.31", "osd 41237", "reply", "console"
    std::vector<std::uint8_t> bytes;
    words::Ports ports;
};

/// What stands around the daemon, made of what boxes and OSD received and of nothing else. One
/// thread.
class Model {
 public:
    static constexpr std::size_t kMostSeen = 200;

    /// A wall anew: map lines, the console's address, the boxes that stand in the user list.
    void setWall(const std::vector<std::string>& lines, const std::string& local,
                 const std::vector<std::string>& users);
    void setAnswer(const std::string& address, const std::optional<std::string>& answer);

    /// A report that a box or the OSD took, or a command that was sent ("console").
    void saw(const std::string& name, const rig::Report& report);
    void sawLine(std::string_view line);

    /// Everything but the datagrams; those from `first` on, and what stands in the list.
    nlohmann::json state(unsigned long first) const;
    /// The fields of one datagram, or null when it is not in the list any more.
    nlohmann::json unfold(unsigned long number) const;
    unsigned long count() const { return count_; }
    const std::string& inControl() const { return inControl_; }

 private:
    struct CellView {
        unsigned x = 0, y = 0;
        std::string address, port;
    };
    struct ScreenView {
        unsigned x = 0, y = 0;
        std::string name;
        std::vector<CellView> cells;
    };

    void take(BoxView& box, const words::Message& message);
    void follow(const std::string& name, const words::Message& message);

    std::vector<ScreenView> screens_;
    std::string local_;
    std::set<std::string> users_;
    std::map<std::string, BoxView> boxes_;
    std::string inControl_;
    rig::Status status_;
    std::deque<Seen> seen_;
    unsigned long count_ = 0;
};

}  // namespace page
