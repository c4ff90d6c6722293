#include "remote/select_input.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <optional>

#include "app/base/text.h"
#include "remote/send.h"
#include "remote/source_query.h"

namespace {

constexpr std::int32_t kDefaultWidth = 1920;
constexpr std::int32_t kDefaultHeight = 1080;
constexpr int kMaxPort = 65535;

/// The address part of a map name; prints both.
AddressText addressOf(const AddressText& name) {
    std::array<char, AddressText::kSize> out{};
    GetIpFromName(name.c_str(), out.data());
    return AddressText{out.data()};
}

bool isUserBox(const AddressText& ip) {
    for (std::int32_t i = 0; i < user_n; ++i) {
        if (user_ip[static_cast<std::size_t>(i)] == ip) {
            return true;
        }
    }
    return false;
}

/// Configures the console at once for a box that has answered before.
void applyKnownPicture(const AddressText& ip) {
    const unsigned n = GetViNum(ip.c_str());
    if (n == 0) {
        return;
    }
    const ViInfo known = vi_info.with([n](const auto& records) { return records[n]; });
    if (known.address != ip) {
        return;
    }
    XRIGHT = known.width;
    YDOWN = known.height;
    rel_enable = known.relative;
    std::printf("--->get vi info (%d,%d),rel:%d<---\n", known.width, known.height, known.relative);
}

}  // namespace

unsigned currentInKey() {
    return currentInfo.with(
        [](const currentCtl& current) { return gridKey(current.cellX, current.cellY); });
}

int get_in_port(const char* name) {
    const char* hyphen = std::strchr(name, '-');
    if (hyphen == nullptr) {
        return port_add;
    }
    const std::int32_t offset = str2int(hyphen + 1);
    if (offset < 0 || offset > kMaxPort) {
        std::printf("no port offset in %s\n", name);
        return port_add = 0;
    }
    return port_add = offset;
}

int inputevent_::GetCurInip(unsigned inKey, AddressText& ipOut) {
    struct Found {
        AddressText screen;
        std::optional<AddressText> cell;
    };
    const Found found = currentInfo.with([inKey](const currentCtl& current) {
        Found result{current.screen.name, std::nullopt};
        const auto cell = current.screen.cells.find(inKey);
        if (cell != current.screen.cells.end()) {
            result.cell = cell->second.name;
        }
        return result;
    });
    if (!found.cell) {
        curOutIp.set(AddressText{"127.0.0.1"});
        rel_enable = 0;
        std::puts("not find curIp");
        return 0;
    }
    curOutIp.set(addressOf(found.screen));
    sendToCurrentBox(keyReleaseReport);
    curName.set(*found.cell);
    port_add = 0;
    get_in_port(found.cell->c_str());
    ipOut = addressOf(*found.cell);
    if (ipOut.view() == AddressText::kNone) {
        rel_enable = 0;
    } else {
        is_user_ip = 0;
        if (isUserBox(ipOut)) {
            std::printf("this is user ip :%s\n", ipOut.c_str());
            is_user_ip = 1;
        }
        applyKnownPicture(ipOut);
    }
    if (is_user_ip) {
        XRIGHT = kDefaultWidth;
        YDOWN = kDefaultHeight;
    }
    return 1;
}

bool selectInputOfCell(inputevent_& events) {
    const unsigned inKey = currentInKey();
    AddressText ip;
    curIp.set(ip);
    if (events.GetCurInip(inKey, ip) == 0) {
        return false;
    }
    curIp.set(ip);
    return true;
}

void queryBox(inputevent_& events) {
    events.queryInProgress = 0;
    events.getChipVersion();
    events.queryInProgress = 1;
}

void bringBoxUpToDate(inputevent_& events) {
    if (curIp.copy().isNone() || is_user_ip) {
        return;
    }
    events.syncLed(true);
    queryBox(events);
}
