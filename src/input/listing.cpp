#include "input/listing.h"

#include <fcntl.h>
#include <poll.h>

#include <cstdio>
#include <sstream>

#include "base/file_start.h"
#include "base/path_prefix.h"
#include "base/text.h"

namespace {

constexpr std::size_t kPanelNodeLength = 6;
/// Far more than a listing has; what lies beyond is not even counted.
constexpr std::size_t kMostRead = 65536;

void printIlitek(const char* node) { std::printf("get new touch event-->%s\n", node); }
void printV3000(const char* node) {
    std::printf("get new V3000 systerm old touch event-->%s\n", node);
}
void printV3000Restart(const char* node) {
    std::printf("get new systerm old touch event-->%s\n", node);
}
void printV5000(const char* node) {
    std::printf("get new V5000 systerm old touch event-->%s\n", node);
}
void printMelfas(const char* node) { std::printf("get LG systerm old touch event-->%s\n", node); }
void printSiw(const char* node) { std::printf("get Siw systerm  touch event-->%s\n", node); }

constexpr std::array<PanelRow, 5> kPanels{{
    // name, type, first pass x and y, restart x and y, offsets, counted, by name, ILITEK-TP,
    // doubled
    {"ILITEK ILITEK-TP", 0, 16384, 16384, 16384, 16384, 0, 0, true, true, true, false, printIlitek,
     printIlitek},
    {"ILITEK Multi-Touch-V3000", 1, 16384, 9600, 16384, 9600, 0, 0, false, false, false, false,
     printV3000, printV3000Restart},
    {"ILITEK Multi-Touch-V5000", 1, 16384, 9600, 16384, 9600, 0, 0, true, false, false, true,
     printV5000, printV5000},
    {"Melfas LGDisplay", 2, 4080, 4080, 4080, 4080, 0, 0, true, true, false, false, printMelfas,
     printMelfas},
    {"Siliconworks", 3, 32627, 32475, 32446, 32173, 182, 299, true, true, false, false, printSiw,
     printSiw},
}};

constexpr std::size_t kNowhere = std::string_view::npos;

/// Where the node of the device named `quotedName` begins, looking from `from` on.
std::size_t findNode(std::string_view listing, const std::string& quotedName, std::size_t from) {
    const std::size_t at = listing.find(quotedName, from);
    return at == kNowhere ? kNowhere : listing.find("event", at + quotedName.size());
}

std::string panelNode(std::string_view listing, std::size_t at) {
    return std::string(listing.substr(at, kPanelNodeLength));
}

std::string listingPath() { return prefixedPath("/proc/bus/input/devices"); }

bool namesKeyboardOrMouse(std::string_view line) {
    return line.find("kbd") != kNowhere || line.find("mouse") != kNowhere;
}

}  // namespace

DeviceListing takeListing(const std::string& text) {
    DeviceListing listing;
    listing.full = text.substr(0, kListingLimit);
    listing.leftOut = text.size() - listing.full.size();
    std::istringstream lines(text);
    std::size_t taken = 0;
    std::size_t bytes = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.find("Handlers") == std::string::npos) {
            continue;
        }
        if (namesKeyboardOrMouse(line)) {
            bytes += line.size() + 1;
            if (++taken > kHandlersLines || bytes > kHandlersLimit) {
                listing.linesLeftOut.push_back(line);
                continue;
            }
        }
        listing.handlers += line + '\n';
    }
    return listing;
}

DeviceListing loadDeviceListing() {
    return takeListing(readFileStart(listingPath(), kMostRead).text);
}

CurrentListing::Change CurrentListing::change() {
    if (file_ < 0) {
        file_.reset(open(listingPath().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    }
    if (file_ < 0) {
        return Change::kUnknown;
    }
    pollfd changes{file_, POLLIN | POLLOUT, 0};
    const int ready = poll(&changes, 1, 0);
    if (ready == 0) {
        return Change::kNone;
    }
    return ready > 0 && (changes.revents & POLLOUT) == 0 ? Change::kTold : Change::kUnknown;
}

/// A change that is told while it reads belongs to what is read, not to the next look.
void CurrentListing::read() {
    bool toldMeanwhile = false;
    do {
        listing_ = loadDeviceListing();
        toldMeanwhile = change() == Change::kTold;
        told_ |= toldMeanwhile;
    } while (toldMeanwhile);
}

const DeviceListing& CurrentListing::look(bool anyway) {
    const Change change = this->change();
    told_ = change == Change::kTold;
    if (change != Change::kNone || anyway || listing_.full.empty()) {
        read();
    }
    return listing_;
}

std::optional<PanelFound> findPanel(std::string_view listing) {
    for (const PanelRow& row : kPanels) {
        const std::string quotedName = "Name=\"" + std::string(row.name);
        const std::size_t node = findNode(listing, quotedName, 0);
        if (node == kNowhere) {
            continue;
        }
        PanelFound found{&row, {panelNode(listing, node)}, false};
        if (row.setsIlitek) {
            found.firmwareV06 = listing.find("V06.00.00.00", node) != kNowhere;
        }
        if (row.doubled) {
            const std::size_t second = findNode(listing, quotedName, node);
            if (second != kNowhere) {
                found.nodes.push_back(panelNode(listing, second));
            }
        }
        return found;
    }
    return std::nullopt;
}

std::vector<HandlersLine> parseHandlers(const std::string& handlers) {
    std::vector<std::string> lines;
    SplitString(handlers, lines, "\n");
    std::vector<HandlersLine> parsed;
    for (const std::string& line : lines) {
        HandlersLine entry;
        const std::size_t node = line.find("event");
        if (node != std::string::npos) {
            entry.node = line.substr(node, line.find(' ', node) - node);
        }
        const std::size_t mouse = line.find("mouse");
        if (mouse != std::string::npos) {
            entry.mouse = line.find("js", mouse) == std::string::npos
                              ? LineKind::kMouse
                              : LineKind::kMouseWithJoystick;
        }
        const std::size_t kbd = line.find("kbd");
        entry.keyboard = kbd != std::string::npos && line.find("mouse", kbd) == std::string::npos;
        parsed.push_back(entry);
    }
    return parsed;
}
