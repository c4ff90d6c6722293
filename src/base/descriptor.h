#pragma once

#include <unistd.h>

/// A descriptor that is closed on every path.
class Descriptor {
 public:
    explicit Descriptor(int fd) : fd_(fd) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    operator int() const { return fd_; }
    void reset(int fd) {
        close();
        fd_ = fd;
    }
    bool close() {
        const int fd = fd_;
        fd_ = -1;
        return fd < 0 || ::close(fd) == 0;
    }

 private:
    int fd_;
};
