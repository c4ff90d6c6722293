#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace page {

/// Where the page is, and who may see it.
struct Place {
    std::string address = "127.0.0.1";
    std::uint16_t port = 8088;  ///< 0: any that is free
    std::string token;          ///< that a viewer elsewhere has to know; empty on the loopback
};

/// Opens the listening socket and sets `place.port` to its port. Throws std::system_error.
int listenAt(Place& place);

// What a request may do. All pure.

/// A page of another origin, or a name that leads here by somebody's DNS, is not meant. `origin` is
/// empty when the browser gives none.
bool isMeant(const Place& place, std::string_view host, std::string_view origin);

/// The token stands behind the "?" of the target.
bool knowsToken(const Place& place, std::string_view target);

/// Asked by the names of files alone: no way leads out of their folder.
bool isFileName(std::string_view name);

/// The media type of a file by its name's end.
std::string typeOf(std::string_view name);

}  // namespace page
