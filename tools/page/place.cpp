#include "page/place.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include "base/descriptor.h"

namespace page {

int listenAt(Place& place) {
    sockaddr_in at{};
    at.sin_family = AF_INET;
    at.sin_port = htons(place.port);
    auto* const generic = reinterpret_cast<sockaddr*>(&at);
    socklen_t size = sizeof(at);
    const int yes = 1;
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    Descriptor guard(fd);
    if (inet_pton(AF_INET, place.address.c_str(), &at.sin_addr) != 1 || fd < 0 ||
        setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes)) != 0 ||
        bind(fd, generic, size) != 0 || listen(fd, SOMAXCONN) != 0 ||
        getsockname(fd, generic, &size) != 0) {
        throw std::system_error(errno, std::generic_category(),
                                place.address + ":" + std::to_string(place.port));
    }
    place.port = ntohs(at.sin_port);
    return fcntl(fd, F_DUPFD_CLOEXEC, 0);
}

bool isMeant(const Place& place, std::string_view host, std::string_view origin) {
    const std::string port = ":" + std::to_string(place.port);
    const bool isHere =
        host == place.address + port || (place.token.empty() && host == "localhost" + port);
    return isHere && (origin.empty() || origin == "http://" + std::string(host));
}

bool knowsToken(const Place& place, std::string_view target) {
    return place.token.empty() ||
           target.substr(std::min(target.find('?'), target.size())) == "?" + place.token;
}

bool isFileName(std::string_view name) {
    return !name.empty() && name.front() != '.' &&
           name.find_first_not_of("abcdefghijklmnopqrstuvwxyz_.") == std::string_view::npos;
}

std::string typeOf(std::string_view name) {
    constexpr std::pair<std::string_view, const char*> kTypes[] = {
        {".html", "text/html; charset=utf-8"},
        {".js", "text/javascript; charset=utf-8"},
        {".css", "text/css; charset=utf-8"},
        {".svg", "image/svg+xml"}};
    for (const auto& [end, type] : kTypes) {
        if (name.ends_with(end)) {
            return type;
        }
    }
    return "application/octet-stream";
}

}  // namespace page
