#include "base/path_prefix.h"

#include <utility>

namespace {

std::string& prefix() {
    static std::string text;
    return text;
}

}  // namespace

void setPathPrefix(std::string directory) { prefix() = std::move(directory); }

std::string prefixedPath(std::string_view path) {
    if (path.empty() || path.front() != '/') {
        return std::string(path);
    }
    return prefix() + std::string(path);
}

bool hasPathPrefix() { return !prefix().empty(); }
