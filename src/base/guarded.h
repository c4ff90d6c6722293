#pragma once

#include <mutex>
#include <utility>

/// A value of several bytes that threads copy in and out whole; it cannot be reached without its
/// guard.
///
/// The guard is held for the length of one copy or one `with`. Nothing that can wait belongs
/// inside: no send, receive, sleep, print, nor a call to code that might do so; a short system call
/// that has to be one step with the value is the exception. Any thread may call any member.
template <class T>
class Guarded {
 public:
    Guarded() = default;
    explicit Guarded(T value) : value_(std::move(value)) {}
    Guarded(const Guarded&) = delete;
    Guarded& operator=(const Guarded&) = delete;

    T copy() const {
        const std::lock_guard hold(guard_);
        return value_;
    }

    /// The old value is destroyed after the guard is released.
    void set(T value) {
        const std::lock_guard hold(guard_);
        std::swap(value_, value);
    }

    /// Runs `use` on the value and returns its result (by value).
    template <class Use>
    auto with(Use&& use) {
        const std::lock_guard hold(guard_);
        return std::forward<Use>(use)(value_);
    }

    template <class Use>
    auto with(Use&& use) const {
        const std::lock_guard hold(guard_);
        return std::forward<Use>(use)(value_);
    }

 private:
    mutable std::mutex guard_;
    T value_{};
};
