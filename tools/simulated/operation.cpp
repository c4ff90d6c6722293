#include "simulated/operation.h"

#include <linux/input-event-codes.h>

#include <array>

namespace simulated {

const std::vector<Key> kKeys = {
    {KEY_A, 0x04, 0},         {KEY_B, 0x05, 0},        {KEY_LEFTCTRL, 0, 0x01},
    {KEY_LEFTSHIFT, 0, 0x02}, {KEY_LEFTALT, 0, 0x04},  {KEY_LEFTMETA, 0, 0x08},
    {KEY_RIGHTCTRL, 0, 0x10}, {KEY_ESC, 0x29, 0},      {KEY_CAPSLOCK, 0x39, 0},
    {KEY_RIGHT, 0x4F, 0},     {KEY_LEFT, 0x50, 0},     {KEY_F13, 0x68, 0},
    {KEY_MUTE, 0x7F, 0},      {KEY_RIGHTMETA, 0, 0x80}};

const std::vector<std::string> kOrders = {
    "OSDSTART",
    "OSDQUIT",
    "PREVIEWQUIT",
    "KVMQUIT",
    "PAUSE",
    "CONTINUE",
    "MTO:0,0",
    "MTO:1,0",
    "MTO:9,9",
    "hotkey&LEFTCTRL+A#LEFTALT+B",
    "hotkey&",
    "relation&0,0,0",
    "relation&0,0,10.0.0.1#1,0,10.0.0.2",
    "details&10.0.0.1#0,0,10.0.0.31#1,0,10.0.0.32-100#0,1,10.0.0.33#1,1,10.0.0.34",
    "details&10.0.0.1#0,0,10.0.0.32-100#1,0,10.0.0.34",
    "details&10.0.0.1#0,0,10.0.0.34",
    "details&10.0.0.2#0,0,10.0.0.41-7#1,0,10.0.0.31"};

const std::vector<std::string> kAnswers = {"", "vi_w=1920&vi_h=1080&kvm=abs",
                                           "vi_w=800&vi_h=600&kvm=rel", "vi_w=800&vi_h=600&kvm=abs",
                                           "vi_w=1280&kvm=abs"};

bool Key::isPlain() const { return code == KEY_A || code == KEY_B; }

std::string Operation::text() const {
    constexpr std::array kNames{"key",   "button", "move",  "wheel", "contact", "touch",
                                "order", "answer", "query", "wait",  "restart", "rest"};
    std::string said = kNames[kind];
    const auto row = static_cast<std::size_t>(a);
    said += " " + std::to_string(device) + " " + std::to_string(a) + " " + std::to_string(b);
    said += kind == kKey      ? " (code " + std::to_string(kKeys[row].code) + ")"
            : kind == kOrder  ? " (" + kOrders[row] + ")"
            : kind == kAnswer ? " (" + kAnswers[row] + ")"
                              : "";
    return said + (between != 0 ? " between " + std::to_string(between) : "") + "\n";
}

}  // namespace simulated
