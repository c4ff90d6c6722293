#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace rig {

/// The time written into an event record.
struct Stamp {
    std::int32_t seconds = 0;
    std::int32_t microseconds = 0;
};

/// A console board in a scratch directory: event nodes (FIFOs), the devices listing, settings,
/// board file, mode directory. The daemon takes it for its machine with `--root`. One thread at a
/// time.
///
/// The directory is made by the constructor and removed by the destructor. Members throw
/// std::filesystem::filesystem_error or std::system_error when the machine refuses something.
class Board {
 public:
    Board();
    ~Board();
    Board(const Board&) = delete;
    Board& operator=(const Board&) = delete;

    const std::filesystem::path& root() const { return root_; }
    std::filesystem::path work() const {
        return root_ / "work";
    }  ///< the daemon's working directory
    std::filesystem::path settingsFile() const { return root_ / "data/tav_rik.ini"; }
    std::filesystem::path node(int number) const;

    // What the daemon reads at its start.
    void setWall(const std::vector<std::string>& lines);  ///< one map line a screen
    void setSetting(const std::string& key, const std::string& value);
    void setLocalAddress(std::string_view address);
    void setBoardName(std::string_view name);
    void setOsd(bool present);                             ///< the mode directory
    void setUsers(const std::vector<std::string>& users);  ///< ip.txt; an empty list removes it
    void write(const std::filesystem::path& relative, std::string_view text) const;
    std::string read(const std::filesystem::path& relative) const;

    // Devices; `number` is that of /dev/input/eventN.
    void plugKeyboard(int number, const std::string& name = "Rig Keyboard");
    void plugMouse(int number, const std::string& name = "Rig Mouse");
    void plugTouch(int number, const std::string& panel);
    /// A keyboard whose node swallows what is written and never has anything to read.
    void plugDead(int number, const std::string& name = "Rig Dead Keyboard");
    /// Any device: `handlers` is the text after "Handlers=" and before the node's name.
    void plug(int number, const std::string& name, const std::string& handlers);
    void unplug(int number);
    void unplugAll();

    /// Puts one record into the node in one write, with `stamp` or the present time. False when
    /// nobody has the node open or it is full.
    bool emit(int number, std::uint16_t type, std::uint16_t code, std::int32_t value,
              std::optional<Stamp> stamp = std::nullopt) const;
    /// Puts in less than a record, as a node that breaks off. False likewise.
    bool emitPart(int number) const;
    /// What a daemon with virtual lights reads from a keyboard: bit 0 Num Lock, bit 1 Caps Lock.
    void setLights(int number, unsigned bits) const;
    // The same as `emit` for a whole packet, ended by a synchronisation event. `code` is a key or a
    // button.
    bool key(int number, std::uint16_t code, bool down) const;
    bool click(int number, std::uint16_t code) const;
    bool move(int number, int dx, int dy) const;
    bool wheel(int number, int steps) const;

 private:
    struct Device {
        int number = 0;
        std::string name;
        std::string handlers;
        int master = -1;  ///< the far end of a dead node
    };

    bool put(int number, const void* bytes, std::size_t length) const;
    void add(Device device);
    void remove(const Device& device) const;
    void writeListing() const;
    void writeSettings() const;

    std::filesystem::path root_;
    std::map<std::string, std::string> settings_;
    std::vector<std::string> wall_;
    std::vector<Device> devices_;
};

}  // namespace rig
