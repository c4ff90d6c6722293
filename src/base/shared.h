#pragma once

#include <atomic>

/// A single flag or word that several threads read and write without waiting for each other.
///
/// Loads and stores are relaxed: the hardware sees a plain word, the compiler an atomic one. There
/// is no ordering between two different Shared values; whoever needs several facts to agree uses
/// Guarded instead. Every member may be called from any thread.
template <class T>
class Shared {
 public:
    constexpr Shared() = default;
    constexpr Shared(T value) : value_(value) {}
    Shared(const Shared&) = delete;
    Shared& operator=(const Shared&) = delete;

    operator T() const { return load(); }
    T load() const { return value_.load(std::memory_order_relaxed); }
    T operator=(T value) {
        value_.store(value, std::memory_order_relaxed);
        return value;
    }

    /// Adds and wraps on overflow (two's complement). Integers only.
    void add(T delta) { value_.fetch_add(delta, std::memory_order_relaxed); }

    /// Stores `value` and returns what was there before, as one step.
    T exchange(T value) { return value_.exchange(value, std::memory_order_relaxed); }

 private:
    std::atomic<T> value_{};
};
