#include "base/work_bound.h"

#include <algorithm>
#include <array>

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::int64_t kFree = 0;   ///< nobody's place
constexpr std::int64_t kIdle = -1;  ///< its thread waits

/// When each piece of work is due, in ticks of the clock.
std::array<std::atomic<std::int64_t>, 8> places{};

std::atomic<std::int64_t>* claim() {
    for (auto& place : places) {
        std::int64_t free = kFree;
        if (place.compare_exchange_strong(free, kIdle)) {
            return &place;
        }
    }
    return nullptr;
}

}  // namespace

WorkBound::WorkBound(std::chrono::milliseconds most) : most_(most), due_(claim()) {}

WorkBound::~WorkBound() {
    if (due_ != nullptr) {
        *due_ = kFree;
    }
}

void WorkBound::begin() {
    if (due_ != nullptr) {
        due_->store((Clock::now() + most_).time_since_epoch().count(), std::memory_order_relaxed);
    }
}

void WorkBound::end() {
    if (due_ != nullptr) {
        due_->store(kIdle, std::memory_order_relaxed);
    }
}

bool allWorkComesBack() {
    const std::int64_t now = Clock::now().time_since_epoch().count();
    return std::none_of(places.begin(), places.end(), [now](const auto& place) {
        const std::int64_t due = place.load(std::memory_order_relaxed);
        return due > 0 && due < now;
    });
}
