#include "life/judge.h"

#include <algorithm>

namespace life {

void Judge::take(const std::string& place, std::span<const std::uint8_t> bytes,
                 Clock::time_point when) {
    const wire::FormRow* const form = wire::formOf(bytes);
    if (form == nullptr) {
        return;
    }
    {
        const std::lock_guard hold(guard_);
        ++reports_;
        Memory& memory = places_[place];
        memory.down[form->index] = wire::isDown(*form, bytes);
        if (form->motionAt == form->motionEnd) {
            const std::uint8_t usage =
                bytes[bytes.size() == wire::Keyboard().size() ? wire::kFirstKeyAt
                                                              : wire::kUserKeyAt];
            if (usage != 0 && usage != memory.usage) {
                presses_.push_back({place, usage, when});
            }
            repeated_ += usage != 0 && std::ranges::equal(bytes, memory.keys) ? 1 : 0;
            memory.usage = usage;
            memory.keys.assign(bytes.begin(), bytes.end());
        }
    }
    changed_.notify_all();
}

std::string Judge::down() const {
    const std::lock_guard hold(guard_);
    std::string text;
    for (const auto& [place, memory] : places_) {
        for (std::size_t form = 0; form < memory.down.size(); ++form) {
            text += memory.down[form] ? place + ", form " + std::to_string(form) + "\n" : "";
        }
    }
    return text;
}

bool Judge::waitForQuiet(Milliseconds quiet, Milliseconds limit) const {
    const auto end = Clock::now() + limit;
    std::unique_lock hold(guard_);
    for (std::uint64_t seen = reports_;; seen = reports_) {
        if (!changed_.wait_for(hold, quiet, [&] { return reports_ != seen; })) {
            return true;
        }
        if (Clock::now() > end) {
            return false;
        }
    }
}

std::vector<Press> Judge::presses(std::size_t count, Milliseconds limit) const {
    std::unique_lock hold(guard_);
    changed_.wait_for(hold, limit, [&] { return presses_.size() >= count; });
    return presses_;
}

void Judge::forgetPresses() {
    const std::lock_guard hold(guard_);
    presses_.clear();
    repeated_ = 0;
}

std::uint64_t Judge::repeated() const {
    const std::lock_guard hold(guard_);
    return repeated_;
}

std::uint64_t Judge::reports() const {
    const std::lock_guard hold(guard_);
    return reports_;
}

}  // namespace life
