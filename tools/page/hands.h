#pragma once

#include <cstdint>
#include <set>
#include <string>

#include "page/message.h"
#include "page/recording.h"
#include "rig/world.h"

namespace page {

/// The keyboard and the mouse of whoever drives, as real records in the event nodes. One thread.
class Hands {
 public:
    using Time = Recording::Clock::time_point;

    explicit Hands(Recording& recording) : recording_(recording) {}

    /// A console anew: keyboard and mouse are plugged, nothing is held.
    void begin();

    /// A key, a movement, a button, the wheel. A press of what is held, which a browser repeats,
    /// and a release of what is not do nothing.
    void input(const rig::World& world, const Said& said, Time now);
    /// Up records for all that is held; without a console it is forgotten.
    void letGo(const rig::World* world, Time now);
    /// Plugs or unplugs "keyboard", "mouse" or "touch".
    void plug(rig::World& world, const std::string& kind, bool isPlugged, Time now);

    const std::set<std::uint16_t>& held() const { return held_; }  ///< evdev codes
    const std::set<std::string>& plugged() const { return plugged_; }

 private:
    void emit(const rig::World& world, std::uint16_t type, std::uint16_t code, std::int32_t value,
              bool ends, Time now);

    Recording& recording_;
    std::set<std::uint16_t> held_;
    std::set<std::string> plugged_;
};

}  // namespace page
