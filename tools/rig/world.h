#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "rig/board.h"
#include "rig/box.h"
#include "rig/daemon.h"

namespace rig {

enum class Kind { kKeyboard, kMouse, kTouch, kDead };

struct PlannedDevice {
    Kind kind = Kind::kKeyboard;
    int number = 0;
    std::string name;  ///< empty: the board's usual name for the kind
};

struct PlannedBox {
    Endpoint at;
    std::optional<std::string> answer;  ///< to "link"; nothing: silent
};

/// What stands around the daemon.
struct Plan {
    std::vector<std::string> wall;  ///< map lines, one a screen
    bool osd = true;
    std::string local;  ///< the board's address; empty: the first screen's output address
    std::string board;  ///< identifier; empty: the one that needs no bring-up
    std::vector<PlannedDevice> devices;
    std::vector<PlannedBox> boxes;  ///< besides those that stand in the wall
    std::vector<std::string> users;
    std::map<std::string, std::string> settings;
    std::vector<std::string> options;  ///< of the daemon's command line
    /// Programs in the place of "box 127.0.0.31" or "osd", see Box.
    std::map<std::string, std::string> programs;
    bool virtualClock = false;  ///< the daemon's clock is what setTime says, and it waits for boxes
};

inline constexpr const char* kUsualAnswer = "vi_w=1920&vi_h=1080&kvm=abs";

/// Keyboard event0, mouse event1, and a wall of two screens beside each other with two boxes each:
/// 127.0.0.31 and .32 in front of the console at 127.0.0.20, .41 and .42 on its right.
Plan usualPlan();

/// A board, its boxes, its OSD recorders and the daemon between them. One thread at a time.
class World {
 public:
    /// Called for every report of a box (name: "box 127.0.0.31") or recorder ("osd 41237").
    using Observer = std::function<void(const std::string& name, const Report& report)>;

    /// Lays out the board and opens all ports. Throws std::system_error when the machine refuses.
    explicit World(const Plan& plan, const Observer& observer = {});

    /// Starts the daemon and waits until its listener serves the devices and the first box has been
    /// told about the lights. Only with a virtual clock is that box's answer sure to have counted.
    /// Nothing when all is well, otherwise what was missing.
    std::optional<std::string> start(Daemon::Observer lines = {});

    void plug(const PlannedDevice& device);

    /// What a daemon with a virtual clock takes for the time of day, and by what every sleep of its
    /// own is divided.
    void setTime(const Stamp& time, int speed = 1);

    /// The box answers so from now on; nothing: it stays silent, and a daemon with a virtual clock
    /// waits for it no longer than it would on a board.
    void setAnswer(const std::string& address, std::optional<std::string> answer);

    Board board;
    Box& box(const std::string& address);  ///< throws std::out_of_range when there is none
    Box& osd(std::uint16_t port);          ///< 41237 or 41238
    Box& control() { return *control_; }   ///< sends commands to the daemon, keeps its answers
    /// Sends a command to the daemon.
    void command(std::string_view text) const;
    /// Sends `mark`, which is no command, again and again until the daemon has told that it is
    /// none: what was sent before is worked off. False when `limit` passes first.
    bool worksOff(const std::string& mark, Milliseconds limit);
    Daemon& daemon() { return *daemon_; }
    bool hasBox(const std::string& address) const { return boxes_.count(address) != 0; }

    /// Every report that nobody took yet, as "box 127.0.0.31  key down A".
    std::vector<std::string> leftovers() const;

    /// What a sanitizer wrote to the daemon's error stream, or that the daemon ended; empty if
    /// neither.
    std::string accident() const;

    void clear();  ///< drops every report not taken yet

 private:
    void openBoxes(const Observer& observer);
    void openRecorders(const Observer& observer);
    std::optional<std::string> firstBox(const std::string& selected);
    bool isUser(const std::string& address) const;
    void writeClock() const;

    Plan plan_;
    Stamp time_{1000, 0};
    int speed_ = 1;
    std::map<std::string, std::unique_ptr<Box>> boxes_;
    std::map<std::uint16_t, std::shared_ptr<Box>> osd_;  ///< one program may have both ports
    std::unique_ptr<Box> control_;
    std::unique_ptr<Daemon> daemon_;
};

}  // namespace rig
