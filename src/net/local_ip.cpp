#include "net/local_ip.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <system_error>

#include "app/base/path_prefix.h"

namespace {

constexpr std::string_view kKey = "kEth0Ip";
constexpr std::size_t kPieceSize = 2047;
constexpr std::uintmax_t kMostBytes = 1U << 20;

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
    const std::filesystem::path path = prefixedPath("/data/net.ini");
    std::error_code problem;
    const std::uintmax_t size = std::filesystem::file_size(path, problem);
    std::string text(problem ? 0 : static_cast<std::size_t>(std::min(size, kMostBytes)), '\0');
    if (!text.empty()) {  // opening anything but a plain file could wait
        std::ifstream file(path, std::ios::binary);
        file.read(text.data(), static_cast<std::streamsize>(text.size()));
        text.resize(static_cast<std::size_t>(file.gcount()));
    }
    return localIpFromText(text);
}
