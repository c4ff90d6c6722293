#include "page/hands.h"

#include <linux/input-event-codes.h>

#include <map>

#include "words/keys.h"

namespace page {
namespace {

constexpr int kKeyboard = 0, kMouse = 1, kTouch = 2;

/// As golden scripts write it: "KEY_A down", "REL_X 5".
std::string stepOf(std::uint16_t type, std::uint16_t code, std::int32_t value) {
    const std::string name = words::eventName({type, code});
    if (type == EV_KEY) {
        return name + (value != 0 ? " down" : " up");
    }
    return type == EV_SYN ? name : name + " " + std::to_string(value);
}

}  // namespace

void Hands::begin() {
    held_.clear();
    plugged_ = {"keyboard", "mouse"};
}

void Hands::input(const rig::World& world, const Said& said, Time now) {
    switch (said.kind) {
        case Said::Kind::kKey:
        case Said::Kind::kButton: {
            // A browser repeats a key that is held, and tells a release of what it never told down.
            const bool isHeld = held_.contains(said.code);
            if (isHeld == said.isDown) {
                return;
            }
            if (said.isDown) {
                held_.insert(said.code);
            } else {
                held_.erase(said.code);
            }
            return emit(world, EV_KEY, said.code, said.isDown ? 1 : 0, true, now);
        }
        case Said::Kind::kMove:
            if (said.x != 0) {
                emit(world, EV_REL, REL_X, said.x, said.y == 0, now);
            }
            if (said.y != 0) {
                emit(world, EV_REL, REL_Y, said.y, true, now);
            }
            return;
        default:
            if (said.y != 0) {
                emit(world, EV_REL, REL_WHEEL, said.y, true, now);
            }
    }
}

void Hands::emit(const rig::World& world, std::uint16_t type, std::uint16_t code,
                 std::int32_t value, bool ends, Time now) {
    const bool isMouse = type == EV_REL || code >= BTN_MISC;
    const char* const device = isMouse ? "mouse" : "keyboard";
    if (!plugged_.contains(device)) {
        return;
    }
    const int node = isMouse ? kMouse : kKeyboard;
    world.board.emit(node, type, code, value);
    recording_.did(stepOf(type, code, value), now);
    if (ends) {
        world.board.emit(node, EV_SYN, SYN_REPORT, 0);
        recording_.did(stepOf(EV_SYN, SYN_REPORT, 0), now);
    }
}

void Hands::letGo(const rig::World* world, Time now) {
    for (const std::uint16_t code : held_) {
        if (world != nullptr) {
            emit(*world, EV_KEY, code, 0, true, now);
        }
    }
    held_.clear();
}

void Hands::plug(rig::World& world, const std::string& kind, bool isPlugged, Time now) {
    const std::map<std::string, rig::PlannedDevice> kDevices{
        {"keyboard", {rig::Kind::kKeyboard, kKeyboard, ""}},
        {"mouse", {rig::Kind::kMouse, kMouse, ""}},
        {"touch", {rig::Kind::kTouch, kTouch, "Siliconworks"}}};
    const auto device = kDevices.find(kind);
    if (device == kDevices.end() || plugged_.contains(kind) == isPlugged) {
        return;
    }
    const std::string node = "event" + std::to_string(device->second.number);
    if (isPlugged) {
        plugged_.insert(kind);
        world.plug(device->second);
        recording_.did("plug " + kind + " " + node, now);
    } else {
        plugged_.erase(kind);
        std::erase_if(held_, [&](std::uint16_t code) {
            return kind == (code >= BTN_MISC ? "mouse" : "keyboard");
        });
        world.board.unplug(device->second.number);
        recording_.did("unplug " + node, now);
    }
}

}  // namespace page
