#include "base/text.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <sstream>
#include <utility>

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// C0 and DEL, and C1 as one byte or as UTF-8 has it.
bool isControl(unsigned char byte, unsigned char before) {
    return (byte < 0x20 && byte != '\n' && byte != '\t') || byte == 0x7F ||
           (byte >= 0x80 && byte < 0xA0 && (before < 0x80 || before == 0xC2));
}

}  // namespace

bool hasNoControls(std::string_view text) {
    unsigned char before = 0;
    return std::none_of(text.begin(), text.end(), [&](char letter) {
        const auto byte = static_cast<unsigned char>(letter);
        return isControl(byte, std::exchange(before, byte));
    });
}

std::string withoutControls(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string shown;
    unsigned char before = 0;
    for (const char letter : text) {
        const auto byte = static_cast<unsigned char>(letter);
        if (isControl(byte, std::exchange(before, byte))) {
            shown += "\\x";
            shown += kDigits[byte / 16];
            shown += kDigits[byte % 16];
        } else {
            shown += letter;
        }
    }
    return shown;
}

void SplitString(const std::string& text, std::vector<std::string>& pieces,
                 const std::string& delimiter) {
    std::size_t start = 0;
    if (!delimiter.empty()) {
        for (std::size_t at = text.find(delimiter); at != std::string::npos;
             at = text.find(delimiter, start)) {
            pieces.push_back(text.substr(start, at - start));
            start = at + delimiter.size();
        }
    }
    if (start < text.size()) {
        pieces.push_back(text.substr(start));
    }
}

void printUnlessEmpty(const std::string& line) {
    if (!line.empty()) {
        std::puts(line.c_str());
    }
}

std::int32_t str2int(const std::string& text) {
    if (text.empty()) {
        return -1;
    }
    if (!isDigit(text[0]) && !(text[0] == '-' && text.size() > 1 && isDigit(text[1]))) {
        return -1;
    }
    std::istringstream stream(text);
    std::int32_t value = 0;
    stream >> value;
    return value;
}

int GetIpFromName(const char* name, char* out) {
    if (const char* hyphen = std::strchr(name, '-')) {
        std::memcpy(out, name, static_cast<std::size_t>(hyphen - name));
    } else {
        std::strcpy(out, name);
    }
    std::printf("name:%s ip:%s\n", name, out);
    return 1;
}
