#pragma once

#include <cstdint>

/// What a thread does while it waits. Most do nothing; one that has something to look after
/// meanwhile puts its own `Waiting` in place, and every wait of that thread then goes through it.

class Waiting {
 public:
    virtual ~Waiting() = default;

    /// Returns after `microseconds`, not earlier.
    virtual void rest(std::int64_t microseconds) = 0;

    /// Waits until `fd` is readable, for at most `milliseconds`: 1, 0 when it is not, or -1 with
    /// errno.
    virtual int untilReadable(int fd, int milliseconds) = 0;
};

/// Puts `waiting` in place for the calling thread while it lives.
class WaitingPlace {
 public:
    explicit WaitingPlace(Waiting& waiting);
    ~WaitingPlace();
    WaitingPlace(const WaitingPlace&) = delete;
    WaitingPlace& operator=(const WaitingPlace&) = delete;

 private:
    Waiting* before_;
};

/// Sleeps for at least `microseconds` of the board's clock, also when signals arrive. Any thread.
void sleepMicroseconds(std::int64_t microseconds);

/// The same for a wait whose end nobody waits for: the kernel may make it longer, by at most
/// `slack` microseconds, to wake the thread together with another one. Threads that are created
/// afterwards do not inherit that.
void sleepRoughly(std::int64_t microseconds, std::int64_t slack);

/// As Waiting::untilReadable. Any thread.
int waitUntilReadable(int fd, int milliseconds);
