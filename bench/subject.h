#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/event_node.h"
#include "rig/board.h"

/// What is measured: the console or one of the bare loops, each with a board, a keyboard, mice and
/// a box of its own. One thread at a time, but for put().

using Clock = std::chrono::steady_clock;

enum class Program { kConsole, kPlainLoop, kBatchLoop };

/// A datagram at the box.
struct Arrival {
    Clock::time_point when;
    std::vector<std::uint8_t> bytes;
    bool isKey() const { return bytes.size() == 11; }
    bool isPointer() const { return bytes.size() == 10; }
};

class Subject {
 public:
    /// How it is started.
    struct Options {
        Program program = Program::kConsole;
        int mice = 1;
        int log = -1;  ///< where its lines go; -1: nowhere
        std::vector<std::string>
            before{};         ///< a program and its options that run it, such as strace
        std::string build{};  ///< the directory of another build whose programs these are
    };

    /// Starts it and waits until it serves its devices. Throws std::runtime_error when it does not.
    explicit Subject(const Options& options);
    ~Subject();
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;

    /// Puts records into a node with one write: 0 is the keyboard, then come the mice. Waits while
    /// the node is full.
    void put(int node, const std::vector<InputRecord>& records) const;

    /// The next datagram at the box (`second`: at the box to its right); nothing after `ms`.
    std::optional<Arrival> next(int ms, bool second = false) const;
    void drop() const;  ///< forgets what has arrived

    /// Ends it with SIGTERM and waits for that.
    void end();

    pid_t pid() const { return pid_; }
    double cpuSeconds() const;
    long status(const std::string& field) const;          ///< of /proc/PID/status
    long wakeUps() const;                                 ///< voluntary switches of all its threads
    Clock::duration started() const { return started_; }  ///< until it served its devices

 private:
    void prepareConsole(int mice);
    void launch(const Options& options);
    void awaitReady(Program program);
    void letSettle() const;

    std::unique_ptr<rig::Board> board_;
    std::vector<int> nodes_;
    int box_ = -1;
    int secondBox_ = -1;
    std::uint16_t port_ = 0;
    pid_t pid_ = -1;
    Clock::duration started_{};
};

// What a device gives.
std::vector<InputRecord> key(bool down);
std::vector<InputRecord> movement(int dx, int dy);
std::vector<InputRecord> click(bool down);
