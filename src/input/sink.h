#pragma once

#include <cstdarg>
#include <cstdint>
#include <span>
#include <string_view>

#include "remote/direction.h"
#include "remote/reports.h"

/// What the rules say: five calls, whose order is the contract. A rule knows no socket and no
/// clock.

/// Where the OSD listens: on this machine or on the output box in use, commands (and its pointer)
/// on one port and keys on another.
enum class OsdPort : std::uint8_t { kHereCommands, kHereKeys, kOutputCommands, kOutputKeys };

enum class Order : std::uint8_t {
    kResync,        ///< lights and picture of the box in control
    kReadLights,    ///< of the keyboard
    kTellLights,    ///< the same, and tell the box
    kLetGo,         ///< of all that is down at the box
    kCross,         ///< pass control on over an edge
    kCrossByArrow,  ///< likewise, the pointer ends inside the picture
};

struct Command {
    Order order = Order::kResync;
    Direction direction = Direction::kLeft;  ///< of a crossing

    friend bool operator==(const Command&, const Command&) = default;
};

class Sink {
 public:
    virtual ~Sink() = default;

    virtual void toBox(const BoxReport& report) = 0;
    virtual void toOsd(OsdPort port, std::span<const std::uint8_t> bytes) = 0;
    /// Carries the command out. Whoever keeps the rules' state gives it the box then in control.
    virtual void command(const Command& command) = 0;
    virtual void pause(std::int64_t microseconds) = 0;

    /// One printed line, or a part of one.
    [[gnu::format(printf, 2, 3)]] void line(const char* format, ...) {
        va_list arguments;
        va_start(arguments, format);
        print(format, arguments);
        va_end(arguments);
    }

    /// The same for one that tells which key was pressed.
    [[gnu::format(printf, 2, 3)]] void keyLine(const char* format, ...) {
        if (hidesKeys) {
            return;
        }
        va_list arguments;
        va_start(arguments, format);
        print(format, arguments);
        va_end(arguments);
    }
    bool hidesKeys = false;

 protected:
    virtual void print(const char* format, va_list arguments) = 0;
};
