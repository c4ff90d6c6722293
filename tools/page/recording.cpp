#include "page/recording.h"

#include <algorithm>

namespace page {

void Recording::begin(const rig::Plan& plan) {
    *this = Recording();
    head_ = "# Recorded from the page.\n";
    for (const std::string& line : plan.wall) {
        head_ += "wall " + line + "\n";
    }
    head_ += plan.wall.empty() ? "wall none\n" : "";
    head_ += plan.osd ? "" : "mode dma\n";
    head_ += plan.local.empty() ? "" : "local " + plan.local + "\n";
    for (const std::string& user : plan.users) {
        head_ += "user " + user + "\n";
    }
    for (const auto& [key, value] : plan.settings) {
        if (!value.empty()) {
            head_.append("setting ").append(key).append("=").append(value).append("\n");
        }
    }
    head_ += "quick\n\n";
}

void Recording::did(std::string_view step, Clock::time_point now) {
    constexpr std::chrono::milliseconds kShortest{2};  // below it a person does one thing
    const auto pause = std::chrono::duration_cast<std::chrono::milliseconds>(now - last_);
    if (last_ != Clock::time_point() && pause >= kShortest) {
        add("+" + std::to_string(pause.count()) + "ms");
    }
    last_ = now;
    add(step);
}

void Recording::came(std::string_view where, std::string_view words) {
    const bool isStarting =
        last_ == Clock::time_point();  // who plays a script waits for that itself
    if (!isStarting && (where.starts_with("box ") || where.starts_with("osd "))) {
        add(std::string(where) + "  " + std::string(words));
    }
}

void Recording::add(std::string_view line) {
    if (++lines_ < kMostLines) {
        steps_.append(line).append("\n");
    }
}

}  // namespace page
