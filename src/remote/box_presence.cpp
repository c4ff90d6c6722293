#include "remote/box_presence.h"

std::string BoxPresence::note(const AddressText& box, bool answered) {
    constexpr int kSilentAfter = 3;
    constexpr std::size_t kMostSilent = 1024;  // more are told, but not remembered
    missed_ = answered ? 0 : (box == asked_ ? missed_ : 0) + 1;
    asked_ = box;
    const std::string name = box.c_str();
    if (answered) {
        return silent_.erase(name) > 0 ? "box " + name + " answers again" : "";
    }
    if (missed_ != kSilentAfter || silent_.contains(name)) {
        return "";
    }
    if (silent_.size() < kMostSilent) {
        silent_.insert(name);
    }
    return "box " + name + " does not answer";
}
