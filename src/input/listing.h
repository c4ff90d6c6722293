#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/descriptor.h"

/// The kernel's input-device listing, read as text. What is not of the supervisor thread is pure.

/// A keyboard may bring three devices of some 500 bytes: eight of them, eight mice, the panels and
/// a board's own devices fit.
inline constexpr std::size_t kListingLimit = 32768;
inline constexpr std::size_t kHandlersLimit = 4096;  ///< bytes of the lines that count
inline constexpr std::size_t kHandlersLines = 64;    ///< how many may count

/// The listing and its Handlers lines, each cut to what the supervisor takes.
struct DeviceListing {
    std::string full;
    std::string handlers;     ///< each line with its line feed
    std::size_t leftOut = 0;  ///< bytes of the listing beyond the limit
    std::vector<std::string> linesLeftOut;
};

/// Cuts a listing's text to its limits: whole Handlers lines only, and only those that name a
/// keyboard or a mouse count and can be left out: the first that does not fit and all behind it.
DeviceListing takeListing(const std::string& text);

/// Reads /proc/bus/input/devices; a file that cannot be read counts as empty. Supervisor thread.
DeviceListing loadDeviceListing();

/// The listing as it stands, read again only when it may have changed: the kernel tells by poll(2)
/// on the file, a plain file tells nothing and is read at each look. Supervisor thread.
class CurrentListing {
 public:
    /// Looks for changes since the look before. `anyway` reads the listing without one: a device
    /// that has just failed is still being taken off it, and a reader waits for that.
    const DeviceListing& look(bool anyway);

    /// The kernel told of a change at the last look. When the Handlers lines are the same all the
    /// while, a device went and another one came in its place.
    bool kernelToldAChange() const { return told_; }

 private:
    enum class Change : std::uint8_t { kNone, kTold, kUnknown };
    Change change();
    void read();

    Descriptor file_{-1};
    DeviceListing listing_;
    bool told_ = false;
};

/// A touch panel recognised by the name that it gives itself, with all that is special about it.
struct PanelRow {
    std::string_view name;
    std::int32_t type;
    std::int32_t maxX, maxY;                ///< full-scale coordinates when found at the first pass
    std::int32_t restartMaxX, restartMaxY;  ///< and when found at a restart
    std::int32_t offsetX, offsetY;          ///< where the panel's own scale begins
    bool counted;                           ///< its nodes count as touch devices
    bool byName;                            ///< no generic touch device is looked for afterwards
    bool setsIlitek;                        ///< it is an "ILITEK-TP", whose firmware is told apart
    bool doubled;                           ///< a second node of the same name belongs to it
    void (*print)(const char* node);        ///< the line of the first pass
    void (*printRestart)(const char* node);
};

struct PanelFound {
    const PanelRow* row = nullptr;
    std::vector<std::string> nodes;  ///< one, or two of a doubled V5000
    bool firmwareV06 = false;
};

/// The first row of the panel table whose name the listing holds; nothing when there is none. A
/// node's name is cut to 6 characters (event12 is taken as event1).
std::optional<PanelFound> findPanel(std::string_view listing);

enum class LineKind : std::uint8_t { kOther, kMouse, kMouseWithJoystick };

/// One Handlers line: its node (text from "event" up to the next blank) and what it can be.
struct HandlersLine {
    std::string node;  ///< empty when the line names none
    LineKind mouse = LineKind::kOther;
    bool keyboard = false;
};

std::vector<HandlersLine> parseHandlers(const std::string& handlers);
