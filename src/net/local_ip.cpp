#include "net/local_ip.h"

#include <algorithm>
#include <cstddef>
#include <optional>

#include "base/file_start.h"
#include "base/path_prefix.h"

namespace {

constexpr std::string_view kKey = "kEth0Ip";
constexpr std::size_t kPieceSize = 2047;
constexpr std::size_t kMostBytes = std::size_t{1} << 20;

/// The value behind the key in one piece of a line.
std::optional<std::string> valueInPiece(std::string_view piece) {
    piece = piece.substr(0, piece.find('\0'));
    const std::size_t key = piece.find(kKey);
    if (key == std::string_view::npos) {
        return std::nullopt;
    }
    const std::size_t value = key + kKey.size() + 1;
    return std::string(piece.substr(std::min(value, piece.size())));
}

std::optional<std::string> valueInLine(std::string_view line) {
    for (std::size_t at = 0; at < line.size(); at += kPieceSize) {
        if (auto value = valueInPiece(line.substr(at, kPieceSize))) {
            return value;
        }
    }
    return std::nullopt;
}

}  // namespace

std::string localIpFromText(std::string_view text) {
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        if (auto value = valueInLine(line)) {
            return *value;
        }
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    return std::string(kKey);
}

std::string GetLocalIp() {
    return localIpFromText(readFileStart(prefixedPath("/data/net.ini"), kMostBytes).text);
}
