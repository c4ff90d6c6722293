#include "base/text.h"

#include <cstdio>
#include <cstring>
#include <sstream>

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

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
