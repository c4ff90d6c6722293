#include "input/devices.h"

#include <linux/input-event-codes.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

/// Opening and closing the nodes of the three lists.

namespace {

constexpr const char* kNodeDirectory = "/dev/input/";

using NodePath = std::array<char, 64>;

NodePath pathOf(const InputDeviceList& list, std::size_t slot) {
    NodePath path{};
    std::snprintf(path.data(), path.size(), "%s%s", kNodeDirectory, list.name(slot));
    return path;
}

bool isGone(int error) { return error == ENOENT || error == ENODEV || error == ENXIO; }

/// Opens the slot's node; what the slot still held open is closed first.
void openSlot(Devices& devices, InputDeviceList& list, std::size_t slot) {
    if (list.fds[slot] >= 0) {
        close(list.fds[slot]);
    }
    const EventNode node = openEventNode(pathOf(list, slot).data());
    if (node.fd < 0 && !isGone(node.error)) {
        std::printf("cannot open %s: %s\n", list.name(slot), std::strerror(node.error));
        devices.nodeFailed = 1;
    }
    list.fds[slot] = node.fd;
    list.layouts[slot] = node.layout;
}

/// A panel that no name recognised: its full scale is what the kernel says of its axes.
void learnTouchRange(TouchPanel& panel, std::int32_t fd) {
    panel.touchMaxX = readAxisMaximum(fd, ABS_X).value_or(0);
    panel.touchMaxY = readAxisMaximum(fd, ABS_Y).value_or(0);
}

/// Returns how many records were dropped.
std::size_t closeList(Lights& lights, InputDeviceList& list) {
    std::size_t dropped = 0;
    for (std::size_t i = 0; i < list.count; ++i) {
        dropped += list.queues[i].clear();
        const std::int32_t fd = list.fds[i];
        lights.ledKeyFd.with([fd](std::int32_t& known) { known = known == fd ? -1 : known; });
        if (fd >= 0) {
            close(fd);
        }
        list.fds[i] = -1;
        list.names[i].fill('\0');
    }
    list.count = 0;
    return dropped;
}

}  // namespace

int openInputFd(Devices& devices) {
    InputDeviceList& keyDevices = devices.keyDevices;
    InputDeviceList& mouseDevices = devices.mouseDevices;
    InputDeviceList& touchDevices = devices.touchDevices;
    std::printf("mouseEvent-->%u keyevent-->%u touchevent-->%u\n", mouseDevices.count.load(),
                keyDevices.count.load(), touchDevices.count.load());
    for (std::size_t i = 0; i < keyDevices.count; ++i) {
        openSlot(devices, keyDevices, i);
        // The line goes by the mouse of the same slot, not by the keyboard just opened.
        if (mouseDevices.fds[i] >= 0) {
            std::printf("open  key input %s  ok\n", keyDevices.name(i));
        } else {
            std::printf("not open key input %s\n", keyDevices.name(i));
        }
    }
    for (std::size_t i = 0; i < mouseDevices.count; ++i) {
        openSlot(devices, mouseDevices, i);
        if (mouseDevices.fds[i] >= 0) {
            std::printf("open  mouse input %s  ok\n", mouseDevices.name(i));
        } else {
            std::printf("not open mouse input %s\n", mouseDevices.name(i));
        }
    }
    for (std::size_t i = 0; i < touchDevices.count; ++i) {
        std::printf("keyeventfilename1: %s\n", pathOf(touchDevices, i).data());
        openSlot(devices, touchDevices, i);
        if (touchDevices.fds[i] >= 0) {
            std::printf("open  touch input %s  ok\n", touchDevices.name(i));
            if (!devices.panel.touchNamed) {
                learnTouchRange(devices.panel, touchDevices.fds[i]);
            }
        } else {
            std::printf("not open touch input %s\n", touchDevices.name(i));
        }
    }
    return 1;
}

int closeInputFd(Devices& devices, Lights& lights, bool mouse, bool key, bool touch) {
    FD_ZERO(&devices.readSet);
    if (key) {
        devices.droppedRecords += closeList(lights, devices.keyDevices);
        std::puts("close all keyboard input device");
    }
    if (mouse) {
        devices.droppedRecords += closeList(lights, devices.mouseDevices);
        std::puts("close all mouse input device");
    }
    if (touch) {
        devices.droppedRecords += closeList(lights, devices.touchDevices);
        std::puts("close all touch input device");
    }
    FD_ZERO(&devices.readSet);
    return 1;
}
