#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>

#include <array>

#include "base/address_text.h"

/// The dotted text of an IPv4 address. Any thread.
inline AddressText dottedText(in_addr address) {
    std::array<char, INET_ADDRSTRLEN> text{};
    inet_ntop(AF_INET, &address, text.data(), text.size());
    return AddressText(text.data());
}
