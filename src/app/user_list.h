#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "base/address_text.h"

/// The user address list ./ip.txt: lines ended by "\r\n"; between a line "IP{" and one that begins
/// with "}" every line is one address, anything else is ignored. The file's size is what bounds
/// the list.

inline constexpr std::size_t kUserListBytes = 2048;

struct UserList {
    std::vector<AddressText> addresses;  ///< in file order
    std::vector<std::string> tooLong;    ///< those of AddressText::kSize characters or more
};

/// An empty line inside a group, which ends the process.
struct UnusableUserList : std::out_of_range {
    UnusableUserList() : out_of_range("ip.txt: an empty line between IP{ and }") {}
};

/// Reads the list's text; a group that is open at the end ends there. An empty line inside a group
/// raises UnusableUserList. Pure, any thread.
UserList parseUserList(std::string_view text);

/// Fills user_ip and user_n from ./ip.txt when it exists; on a problem user_n is 0 and one line
/// tells it. The range error of parseUserList is meant to end the process. Main thread, before
/// start-up's threads exist.
void loadUserList();
