#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Appends the pieces of `text` between occurrences of `delimiter` to `pieces`. Adjacent delimiters
/// give empty pieces; an empty rest after the last delimiter gives none. Any thread.
void SplitString(const std::string& text, std::vector<std::string>& pieces,
                 const std::string& delimiter);

/// `text` with control bytes, line feeds and tabs apart, as "\xNN": what came from outside steers
/// no terminal. Letters of UTF-8 stay. Any thread.
std::string withoutControls(std::string_view text);
/// True when it is the same.
bool hasNoControls(std::string_view text);

/// Prints `line` with its end, unless it is empty. Any thread.
void printUnlessEmpty(const std::string& line);

/// The decimal number at the start of `text` (an optional minus sign, then digits; what follows is
/// ignored). -1 when the text does not start so; the largest or smallest value on overflow. Any
/// thread.
std::int32_t str2int(const std::string& text);

/// Copies the characters of `name` before its first "-" into `out` without a NUL, or the whole name
/// with its NUL when it has none; prints both. `out` holds at least as many zeroed bytes as `name`
/// with its NUL. Returns 1. Any thread.
int GetIpFromName(const char* name, char* out);
