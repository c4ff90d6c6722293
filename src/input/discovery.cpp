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

void takePanel(Devices& devices, const PanelFound& found, bool restart) {
    const PanelRow& row = *found.row;
    InputDeviceList& touch = devices.touchDevices;
    for (std::size_t i = 0; i < found.nodes.size(); ++i) {
        storeName(touch, i, found.nodes[i]);
        (restart ? row.printRestart : row.print)(touch.name(i));
    }
    TouchPanel& panel = devices.panel;
    panel.touchType = row.type;
    panel.touchMaxX = restart ? row.restartMaxX : row.maxX;
    panel.touchMaxY = restart ? row.restartMaxY : row.maxY;
    panel.offsetX = row.offsetX;
    panel.offsetY = row.offsetY;
    panel.ilitekTouch = panel.ilitekTouch || row.setsIlitek;
    panel.touchFwV06 = panel.touchFwV06 || found.firmwareV06;
    if (row.counted) {
        touch.count = static_cast<std::uint32_t>(found.nodes.size());
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

void takeMice(Devices& devices, const std::vector<HandlersLine>& lines) {
    for (const HandlersLine& line : lines) {
        if (line.mouse != LineKind::kMouse || line.node.empty()) {
            continue;
        }
        if (isTouchNode(devices.touchDevices, line.node)) {
            std::puts("this is touch event");
        } else if (appendName(devices.mouseDevices, line.node)) {
            std::printf("get mouse event-->%s\n", line.node.c_str());
        }
    }
}

}  // namespace

void recognisePanel(Devices& devices, const DeviceListing& listing, bool restart,
                    bool& touchByName) {
    if (listing.leftOut != 0) {
        std::printf("input device list too long, left out %zu bytes\n", listing.leftOut);
    }
    for (const std::string& line : listing.linesLeftOut) {
        std::printf("input device list too long, left out %s\n", line.c_str());
    }
    devices.keyDevices.count = 0;
    devices.mouseDevices.count = 0;
    devices.touchDevices.count = 0;
    const auto found = findPanel(listing.full);
    devices.panel.touchNamed = found.has_value();
    if (found) {
        takePanel(devices, *found, restart);
        touchByName = touchByName || found->row->byName;
        return;
    }
    std::puts(restart ? "not get newTouch" : "not Touch");
    devices.panel.ilitekTouch = false;
    devices.panel.offsetX = devices.panel.offsetY = 0;
    touchByName = false;
}

void classifyLines(Devices& devices, const DeviceListing& listing, bool touchByName) {
    const std::vector<HandlersLine> lines = parseHandlers(listing.handlers);
    takeMice(devices, lines);
    for (const HandlersLine& line : lines) {
        if (line.keyboard && !line.node.empty() && appendName(devices.keyDevices, line.node)) {
            std::printf("get key event-->%s\n", line.node.c_str());
        }
    }
    if (touchByName || devices.touchDevices.count != 0) {
        return;
    }
    for (const HandlersLine& line : lines) {
        if (line.mouse == LineKind::kMouseWithJoystick && !line.node.empty() &&
            appendName(devices.touchDevices, line.node)) {
            std::printf("get touch event-->%s\n", line.node.c_str());
        }
    }
}
