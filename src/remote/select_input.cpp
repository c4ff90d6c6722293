#include "remote/select_input.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <optional>

#include "base/text.h"
#include "remote/source_query.h"

namespace {

/// How often a selection starts over because another thread entered another cell meanwhile.
constexpr int kMostSelections = 4;

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

/// The decimal number after the first "-" of a map name; 0, with one line, when it is no port
/// offset.
std::int32_t portOffsetOf(const char* name) {
    const char* hyphen = std::strchr(name, '-');
    if (hyphen == nullptr) {
        return 0;
    }
    const std::int32_t offset = str2int(hyphen + 1);
    if (offset < 0 || offset > kMaxPort) {
        std::printf("no port offset in %s\n", name);
        return 0;
    }
    return offset;
}

/// What the table knows of a box that has answered before.
std::optional<ViInfo> knownPicture(const AddressText& ip) {
    const unsigned n = GetViNum(ip.c_str());
    if (n == 0) {
        return std::nullopt;
    }
    const ViInfo known = vi_info.with([n](const auto& records) { return records[n]; });
    return known.address == ip ? std::optional(known) : std::nullopt;
}

/// Everything that changes when a box gets control; what stays as it is has no value.
struct Selection {
    AddressText outIp{AddressText::kThisMachine};
    AddressText ip;
    AddressText name;
    bool found = false;
    std::int32_t portAdd = 0;
    std::optional<std::uint8_t> user;
    std::optional<std::uint8_t> relative;
    std::optional<ViInfo> picture;
};

/// The names of the current screen and of one of its cells.
struct CellNames {
    AddressText screen;
    std::optional<AddressText> cell;
};

CellNames namesOf(unsigned inKey) {
    return currentInfo.with([inKey](const currentCtl& current) {
        CellNames names{current.screen.name, std::nullopt};
        const auto cell = current.screen.cells.find(inKey);
        if (cell != current.screen.cells.end()) {
            names.cell = cell->second.name;
        }
        return names;
    });
}

/// Looks a cell's box up and prints what it finds; changes nothing. `repeatKeys` sends the release
/// report to the box that still has control.
Selection lookUp(unsigned inKey, const inputevent_* repeatKeys) {
    Selection selection;
    const CellNames names = namesOf(inKey);
    if (!names.cell) {
        selection.relative = 0;
        std::puts("not find curIp");
        return selection;
    }
    selection.found = true;
    selection.outIp = addressOf(names.screen);
    if (repeatKeys != nullptr) {
        sendToCurrentBox(repeatKeys->keyReleaseReport);
    }
    selection.name = *names.cell;
    selection.portAdd = portOffsetOf(names.cell->c_str());
    selection.ip = addressOf(*names.cell);
    if (selection.ip.view() == AddressText::kNone) {
        selection.relative = 0;
        return selection;
    }
    selection.user = isUserBox(selection.ip);
    if (*selection.user != 0) {
        std::printf("this is user ip :%s\n", selection.ip.c_str());
    }
    selection.picture = knownPicture(selection.ip);
    if (const auto& known = selection.picture) {
        selection.relative = known->relative;
        std::printf("--->get vi info (%d,%d),rel:%d<---\n", known->width, known->height,
                    known->relative);
    }
    return selection;
}

/// Stores a selection; boxGuard is held.
void store(const Selection& selection) {
    curOutIp.set(selection.outIp);
    rel_enable = selection.relative.value_or(rel_enable);
    if (!selection.found) {
        return;
    }
    curName.set(selection.name);
    port_add = selection.portAdd;
    is_user_ip = selection.user.value_or(is_user_ip);
    if (selection.picture) {
        XRIGHT = selection.picture->width;
        YDOWN = selection.picture->height;
    }
    if (is_user_ip) {
        XRIGHT = kDefaultWidth;
        YDOWN = kDefaultHeight;
    }
}

/// A place on the wall: the screen's key and the cell's key.
struct WallPlace {
    unsigned outKey = 0;
    unsigned inKey = 0;

    friend bool operator==(const WallPlace&, const WallPlace&) = default;
};

WallPlace currentPlace() {
    return currentInfo.with([](const currentCtl& current) {
        return WallPlace{gridKey(current.outX, current.outY),
                         gridKey(current.cellX, current.cellY)};
    });
}

}  // namespace

unsigned currentInKey() { return currentPlace().inKey; }

int get_in_port(const char* name) {
    if (std::strchr(name, '-') == nullptr) {
        return port_add;
    }
    return port_add = portOffsetOf(name);
}

int inputevent_::GetCurInip(unsigned inKey, AddressText& ipOut) {
    const Selection selection = lookUp(inKey, this);
    if (selection.found) {
        ipOut = selection.ip;
    }
    const std::lock_guard hold(boxGuard);
    store(selection);
    return selection.found ? 1 : 0;
}

bool selectInputOfCell() {
    for (int attempt = 1;; ++attempt) {
        const WallPlace place = currentPlace();
        const Selection selection = lookUp(place.inKey, nullptr);
        const std::lock_guard hold(boxGuard);
        if (attempt < kMostSelections && currentPlace() != place) {
            continue;
        }
        store(selection);
        curIp.set(selection.ip);
        return selection.found;
    }
}

void queryBox(inputevent_& events) {
    events.queryInProgress = 0;
    events.getChipVersion();
    events.queryInProgress = 1;
}

void bringBoxUpToDate(inputevent_& events) {
    const BoxTarget box = currentTarget();
    if (box.ip.isNone() || box.user) {
        return;
    }
    events.syncLed(true);
    queryBox(events);
}

void letGoOfLostBox(const inputevent_& events, const BoxTarget& before) {
    const BoxTarget now = currentTarget();
    if (events.keysHeld > 0 && (now.ip != before.ip || now.port != before.port)) {
        sendKeys(before, events.keyReleaseReport);
    }
}

bool selectInputByCommand(const inputevent_& events) {
    const BoxTarget before = currentTarget();
    const bool found = selectInputOfCell();
    letGoOfLostBox(events, before);
    return found;
}
