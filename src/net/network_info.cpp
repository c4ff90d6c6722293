#include "net/network_info.h"

#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>

#include "net/dotted_text.h"

static_assert(NetworkInfo::kAddress == SIOCGIFADDR && NetworkInfo::kBroadcast == SIOCGIFBRDADDR &&
              NetworkInfo::kNetmask == SIOCGIFNETMASK && NetworkInfo::kHardware == SIOCGIFHWADDR);

namespace {

struct Texts {
    using Text = std::array<char, NetworkInfo::kTextSize>;
    Text hardware{};
    Text address{};
    Text broadcast{};
    Text netmask{};
};

bool ask(int fd, unsigned long request, ifreq& record, const char* problem) {
    if (ioctl(fd, request, &record) < 0) {
        std::perror(problem);
        return false;
    }
    return true;
}

void formatHardware(const ifreq& record, Texts::Text& text) {
    std::array<unsigned char, 6> b{};
    std::memcpy(b.data(), record.ifr_hwaddr.sa_data, b.size());
    std::snprintf(text.data(), text.size(), "%02x:%02x:%02x:%02x:%02x:%02x", b[0], b[1], b[2], b[3],
                  b[4], b[5]);
}

void formatAddress(const ifreq& record, Texts::Text& text) {
    sockaddr_in address{};
    std::memcpy(&address, &record.ifr_addr, sizeof address);
    std::snprintf(text.data(), text.size(), "%s", dottedText(address.sin_addr).c_str());
}

/// Fills the texts from the interface of `listed`. False when a request failed.
bool describe(int fd, const ifreq& listed, Texts& texts) {
    ifreq record = listed;
    if (!ask(fd, SIOCGIFFLAGS, record, "ioctl warning: SIOCGIFFLAGS")) {
        return true;
    }
    if (!ask(fd, SIOCGIFHWADDR, record, "ioctl error: SIOCGIFHWADDR")) {
        return false;
    }
    formatHardware(record, texts.hardware);
    if (!ask(fd, SIOCGIFADDR, record, "ioctl error: SIOCGIFADDR")) {
        return false;
    }
    formatAddress(record, texts.address);
    if (!ask(fd, SIOCGIFBRDADDR, record, "ioctl error: SIOCGIFBRDADDR")) {
        return false;
    }
    formatAddress(record, texts.broadcast);
    if (!ask(fd, SIOCGIFNETMASK, record, "ioctl error: SIOCGIFNETMASK")) {
        return false;
    }
    formatAddress(record, texts.netmask);
    return true;
}

bool describeAll(int fd, const char* name, Texts& texts) {
    std::array<ifreq, 16> records{};
    ifconf list{};
    list.ifc_len = sizeof records;
    list.ifc_req = records.data();
    if (ioctl(fd, SIOCGIFCONF, &list) < 0) {
        std::perror("ioctl error: SIOCGIFCONF");
        return false;
    }
    for (std::size_t i = static_cast<std::size_t>(list.ifc_len) / sizeof(ifreq); i-- > 0;) {
        if (std::strncmp(records[i].ifr_name, name, IFNAMSIZ) == 0 &&
            !describe(fd, records[i], texts)) {
            return false;
        }
    }
    return true;
}

int deliver(const Texts& texts, NetworkInfo::IF_CONFIG selector, char* out) {
    switch (selector) {
        case NetworkInfo::kAddress:
            std::strcpy(out, texts.address.data());
            return 1;
        case NetworkInfo::kBroadcast:
            std::strcpy(out, texts.broadcast.data());
            return 1;
        case NetworkInfo::kNetmask:
            std::strcpy(out, texts.netmask.data());
            return 1;
        case NetworkInfo::kHardware:
            std::strcpy(out, texts.hardware.data());
            return 1;
        case NetworkInfo::kEverything:
            std::snprintf(out, NetworkInfo::kEverythingSize, "mac:%s@ip:%s@mask:%s@braod:%s",
                          texts.hardware.data(), texts.address.data(), texts.netmask.data(),
                          texts.broadcast.data());
            return 1;
    }
    return 0;
}

}  // namespace

int NetworkInfo::GetNetworkInfo(const char* name, IF_CONFIG selector, char* out) {
    if (name == nullptr || out == nullptr) {
        return 0;
    }
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        std::perror("socket create error");
        return 0;
    }
    Texts texts;
    const bool described = describeAll(fd, name, texts);
    close(fd);
    return described ? deliver(texts, selector, out) : 0;
}
