#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ctl {

/// What a console answers: how many of each kind of device are open.
struct DeviceCount {
    std::string mice, keyboards,
        panels;          ///< a number each; all empty when they cannot be told apart
    std::string digits;  ///< as they came
};

/// Pure.
DeviceCount deviceCount(std::string_view status);
/// "1 mouse, 2 keyboards, no touch panel".
std::string inWords(const DeviceCount& count);

/// The last line of a console's log that tells which box has control, and that box; "0.0.0.0" for
/// none.
struct LastBox {
    std::string box;
    std::string line;
};
std::optional<LastBox> lastBox(std::string_view log);

/// Whether the text of /proc/net/udp has a socket bound to that port.
bool isBound(std::string_view procNetUdp, int port);

/// The standard output of a command, or nothing when there is no such program.
std::optional<std::string> outputOf(const char* command);

}  // namespace ctl
