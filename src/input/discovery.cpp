#include "input/discovery.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

/// Puts `node` into the slot, cut to what the slot holds.
void storeName(InputDeviceList& list, std::size_t slot, const std::string& node) {
    auto& name = list.names[slot];
    name.fill('\0');
    std::memcpy(name.data(), node.data(), std::min(node.size(), name.size() - 1));
}

/// Appends `node`; false, with one line, when the list is full.
bool appendName(InputDeviceList& list, const std::string& node) {
    const std::uint32_t slot = list.count;
    if (slot >= InputDeviceList::kSlots) {
        std::printf("over %zu devices of a kind, left out %s\n", InputDeviceList::kSlots,
                    node.c_str());
        return false;
    }
    storeName(list, slot, node);
    list.count = slot + 1;
    return true;
}

void printPanel(PanelKind kind, bool restart, const char* node) {
    switch (kind) {
        case PanelKind::kIlitekTp:
            std::printf("get new touch event-->%s\n", node);
            break;
        case PanelKind::kV3000:
            if (restart) {
                std::printf("get new systerm old touch event-->%s\n", node);
            } else {
                std::printf("get new V3000 systerm old touch event-->%s\n", node);
            }
            break;
        case PanelKind::kV5000:
            std::printf("get new V5000 systerm old touch event-->%s\n", node);
            break;
        case PanelKind::kMelfas:
            std::printf("get LG systerm old touch event-->%s\n", node);
            break;
        case PanelKind::kSiliconworks:
            std::printf("get Siw systerm  touch event-->%s\n", node);
            break;
    }
}

void takePanel(inputevent_& events, const PanelFound& found, bool restart) {
    const PanelRow& row = *found.row;
    InputDeviceList& touch = events.touchDevices;
    for (std::size_t i = 0; i < found.nodes.size(); ++i) {
        storeName(touch, i, found.nodes[i]);
        printPanel(row.kind, restart, touch.name(i));
    }
    events.touchType = row.type;
    events.touchMaxX = restart ? row.restartMaxX : row.maxX;
    events.touchMaxY = restart ? row.restartMaxY : row.maxY;
    if (row.counted) {
        touch.count = static_cast<std::uint32_t>(found.nodes.size());
    }
    if (row.kind == PanelKind::kIlitekTp) {
        events.ilitekTouch = 1;
    }
    if (found.firmwareV06) {
        events.touchFwV06 = 1;
    }
}

bool isTouchNode(const InputDeviceList& touch, const std::string& node) {
    for (std::size_t i = 0; i < touch.count; ++i) {
        if (node == touch.name(i)) {
            return true;
        }
    }
    return false;
}

void takeMice(inputevent_& events, const std::vector<HandlersLine>& lines) {
    for (const HandlersLine& line : lines) {
        if (line.mouse != LineKind::kMouse || line.node.empty()) {
            continue;
        }
        if (isTouchNode(events.touchDevices, line.node)) {
            std::puts("this is touch event");
        } else if (appendName(events.mouseDevices, line.node)) {
            std::printf("get mouse event-->%s\n", line.node.c_str());
        }
    }
}

}  // namespace

void recognisePanel(inputevent_& events, const DeviceListing& listing, bool restart,
                    bool& touchByName) {
    if (listing.leftOut != 0 || listing.linesLeftOut != 0) {
        std::printf("input device list too long, left out %zu bytes and %zu Handlers lines\n",
                    listing.leftOut, listing.linesLeftOut);
    }
    events.keyDevices.count = 0;
    events.mouseDevices.count = 0;
    events.touchDevices.count = 0;
    const auto found = findPanel(listing.full);
    events.touchNamed = static_cast<std::uint8_t>(found.has_value());
    if (found) {
        takePanel(events, *found, restart);
        touchByName = touchByName || found->row->byName;
        return;
    }
    std::puts(restart ? "not get newTouch" : "not Touch");
    events.ilitekTouch = 0;
    touchByName = false;
}

void classifyLines(inputevent_& events, const DeviceListing& listing, bool touchByName) {
    const std::vector<HandlersLine> lines = parseHandlers(listing.handlers);
    takeMice(events, lines);
    for (const HandlersLine& line : lines) {
        if (line.keyboard && !line.node.empty() && appendName(events.keyDevices, line.node)) {
            std::printf("get key event-->%s\n", line.node.c_str());
        }
    }
    if (touchByName || events.touchDevices.count != 0) {
        return;
    }
    for (const HandlersLine& line : lines) {
        if (line.mouse == LineKind::kMouseWithJoystick && !line.node.empty() &&
            appendName(events.touchDevices, line.node)) {
            std::printf("get touch event-->%s\n", line.node.c_str());
        }
    }
}
