#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// The messages that are text: commands to the console, notices to the OSD, a box's query and its
/// answer, the device status. None ends with a NUL but the status, which is filled up with them.
/// All functions are pure and may be called from any thread. Tools write and read with this same
/// header.
///
///   to the console, port 41236         relation&0,0,192.168.1.20#1,0,192.168.1.21
///   to the OSD, port 41237             TO:192.168.1.20,1,0
///   to a box, port 80 plus its offset  link
///   from the box                       vi_w=1920&vi_h=1080&kvm=abs
///   status, asked                      [seq]\n[control]=192.168.1.20\nusb_link_device\nend
///   status, told (64 bytes)            [ack]\n[controlled]=192.168.1.20\nusb_link_device=110
namespace wire {

inline constexpr int kCommandPort = 41236;
/// Orders for every console of a site go there.
inline constexpr const char* kControlGroup = "224.168.1.1";
/// A longer command is cut.
inline constexpr std::size_t kLargestCommand = 2048;

enum class Command : std::uint8_t {
    kOsdQuit,
    kOsdStart,
    kPreviewQuit,
    kKvmQuit,
    kRelation,
    kDetails,
    kHotkey,
    kPause,
    kContinue,
    kMouseTo,
    kStatus,
};

struct CommandRow {
    Command command;
    std::string_view word;
    bool isWhole;  ///< the whole text is the word; otherwise the text begins with it
};

/// In the order in which a text is compared with them; the first that fits is taken.
inline constexpr std::array<CommandRow, 11> kCommands{{
    {Command::kOsdQuit, "OSDQUIT", true},
    {Command::kOsdStart, "OSDSTART", true},
    {Command::kPreviewQuit, "PREVIEWQUIT", true},
    {Command::kKvmQuit, "KVMQUIT", true},
    {Command::kRelation, "relation", false},
    {Command::kDetails, "details", false},
    {Command::kHotkey, "hotkey", false},
    {Command::kPause, "PAUSE", false},
    {Command::kContinue, "CONTINUE", false},
    {Command::kMouseTo, "MTO", false},
    {Command::kStatus, "[seq]", false},
}};

/// The row that a text is taken for; null when it is no command.
const CommandRow* commandOf(std::string_view text);

/// The word of a command.
constexpr std::string_view wordOf(Command command) {
    return kCommands[static_cast<std::size_t>(command)].word;
}

/// The "relation" that takes control from every box.
inline constexpr std::string_view kNoControl = "relation&0,0,0";
/// A "details" text up to this length describes one screen entry only.
inline constexpr std::size_t kSingleEntryLength = 48;

/// A box is asked for its picture with this, and tells it with these in any order.
inline constexpr std::string_view kQuery = "link";
inline constexpr std::string_view kWidthKey = "vi_w=";
inline constexpr std::string_view kHeightKey = "vi_h=";
inline constexpr std::string_view kModeKey = "kvm=";
inline constexpr std::string_view kRelativeMode = "rel";
inline constexpr std::string_view kAbsoluteMode = "abs";

/// What the OSD is told when control passed over an edge: "TO:" screen, column and row of the cell.
inline constexpr std::string_view kCrossing = "TO:";
std::string crossing(std::string_view screen, std::uint32_t column, std::uint32_t row);

/// The device status of the console at `address`, asked for; it comes back to who asks.
std::string statusQuery(std::string_view address);
/// A query without this gets no answer.
inline constexpr std::string_view kStatusSubject = "usb_link_device";
inline constexpr std::string_view kStatusHead = "[ack]\n[controlled]=";
using Status = std::array<char, 64>;
/// The answer: the console's address, and how many of each kind of device are open.
Status status(std::string_view address, unsigned mice, unsigned keyboards, unsigned panels);

}  // namespace wire
