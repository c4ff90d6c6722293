#pragma once

#include <string>
#include <string_view>

/// This board's own address from /data/net.ini: what stands one character after "kEth0Ip" on the
/// first line that has it, or "kEth0Ip" itself when none does. A file that cannot be read counts as
/// empty; its first mebibyte is looked at. Never waits. Any thread.
std::string GetLocalIp();

/// The same from the file's text.
///
/// Lines with the key are looked at in pieces of at most 2047 characters, a piece up to its first
/// NUL; a key that lies across two pieces is not seen.
std::string localIpFromText(std::string_view text);
