#pragma once

#include <sys/select.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "base/event_node.h"
#include "base/shared.h"
#include "base/state.h"
#include "control/device_counts.h"
#include "input/node_queue.h"
#include "remote/console_state.h"

/// The input devices: three lists of nodes and the touch panel's range. The counts may be read from
/// any thread; all else belongs to the input thread while it runs and to the supervisor while it
/// does not.

/// Devices of one kind.
struct InputDeviceList {
    static constexpr std::size_t kSlots = 8;
    static constexpr std::size_t kNameSize = 16;

    explicit InputDeviceList(Shared<std::uint32_t>& shownCount) : count(shownCount) {
        fds.fill(-1);
    }

    Shared<std::uint32_t>& count;
    std::array<std::array<char, kNameSize>, kSlots> names{};  ///< node names such as event3
    std::array<std::int32_t, 16> fds{};                       ///< -1 when the node is not open
    std::array<RecordLayout, 16> layouts{};
    std::array<NodeQueue, kSlots> queues;  ///< what the nodes gave and nobody has served yet

    EventNode node(std::size_t slot) const { return {.fd = fds[slot], .layout = layouts[slot]}; }
    const char* name(std::size_t slot) const { return names[slot].data(); }
};

/// What is known of the touch panel.
struct TouchPanel {
    std::int32_t touchType = 0;
    std::int32_t touchMaxX = 0, touchMaxY = 0;  ///< full-scale coordinates; 0: unknown
    std::int32_t offsetX = 0, offsetY = 0;      ///< where the panel's own scale begins
    bool touchNamed = false;                    ///< its range is known by its name
    bool ilitekTouch = false;
    bool touchFwV06 = false;
};

struct Devices {
    explicit Devices(DeviceCounts& counts)
        : keyDevices(counts.keyboards), mouseDevices(counts.mice), touchDevices(counts.panels) {
        FD_ZERO(&readSet);
    }

    InputDeviceList keyDevices;
    InputDeviceList mouseDevices;
    InputDeviceList touchDevices;
    TouchPanel panel;
    std::array<char, 32> actKeyEvent{};  ///< supervisor only
    Flag listenerAlive{0};  ///< 1 while the listener runs, 0 once it failed; any thread
    fd_set readSet;
    std::size_t droppedRecords = 0;  ///< unserved ones of nodes that were closed; supervisor only
    Flag nodeFailed{0};  ///< 1 when one that is there could not be opened or probed; any thread
};

/// Opens every listed node, with its lines; a slot whose node does not open gets -1. Returns 1.
int openInputFd(Devices& devices);

/// Closes and empties the chosen lists; the lights' keyboard is forgotten with its node, and what
/// waited in their queues is dropped and counted. Returns 1.
int closeInputFd(Devices& devices, Lights& lights, bool mouse, bool key, bool touch);
