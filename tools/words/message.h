#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace words {

using Bytes = std::span<const std::uint8_t>;

/// UDP ports of a datagram, host order; 0: not known.
struct Ports {
    int from = 0;
    int to = 0;
};

/// One part of a message.
struct Field {
    std::size_t at = 0;    ///< offset of its first byte
    std::size_t size = 0;  ///< in bytes
    std::string name;      ///< as docs/wireshark/tavrik.lua has it behind "tavrik."
    std::string value;     ///< a decimal number, the text itself, or bytes as 57:ab:01
    std::string meaning;   ///< in words; empty when the value says it
};

struct Message {
    std::string name;           ///< "keyboard report"; empty: it is none of this wire
    std::string words;          ///< all of it in one line
    std::vector<Field> fields;  ///< in the order of their bytes
};

/// What a datagram means, by the daemon's own header. Words of a report:
///
///   key down LEFTCTRL+C        keyboard report with a key (several keys: "key down A B")
///   modifiers LEFTSHIFT        keyboard report with modifiers only
///   keys up                    keyboard report, all released
///   ... locks caps+num         the same three to the OSD, with the lock byte ("locks none")
///   user key down A            the same three to a user-list box
///   pointer 412,300 buttons left+right wheel -1     absolute report; no "wheel" when it is 0
///   motion +3,-2 buttons none                       relative report
///   user pointer 4120,5400 buttons none             user-list report, coordinates as sent
///   lights caps on num off
///   OSDSTART                   any other text; line feeds as \n, "+ 3 NUL" for zeroes at its end
///   hex 57 ab 09               anything else
///
/// A command counts as one only on its way to the console's port, a notice to the OSD's; where a
/// port is not known both do. Pure; any thread.
Message decode(Bytes bytes, Ports ports = {});

/// The words alone.
std::string describe(Bytes bytes);

/// A message byte by byte: its name, length and words, then a line for each field with offset,
/// bytes and meaning; fields of one name that follow each other share one. Ends with a line feed.
std::string table(Bytes bytes, const Message& message);

/// Every name that `decode` gives, in the order of docs/protocol.md.
std::vector<std::string> messageNames();

}  // namespace words
