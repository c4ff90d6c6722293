#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

/// Work that has to come back: a thread that hangs is found out by somebody else.

/// One thread's. It lives where the thread's loop does.
class WorkBound {
 public:
    /// Work may take `most`. Where all 8 places are taken the thread is not looked after.
    explicit WorkBound(std::chrono::milliseconds most);
    ~WorkBound();
    WorkBound(const WorkBound&) = delete;
    WorkBound& operator=(const WorkBound&) = delete;

    /// Around a piece of work.
    void begin();
    void end();

 private:
    const std::chrono::milliseconds most_;
    std::atomic<std::int64_t>* const due_;
};

/// False while a piece of work has not come back within its bound. Any thread.
bool allWorkComesBack();
