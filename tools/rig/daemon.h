#pragma once

#include <sys/types.h>

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "rig/box.h"

namespace rig {

/// The daemon's program, or the one whose clock a test sets (tavrik-virtual), started on a board
/// and watched from outside. It dies with this object, or with the process that made it. Any thread
/// may call any member.
class Daemon {
 public:
    /// Called on the reading thread for every line, without its line end.
    using Observer = std::function<void(std::string_view line)>;
    using Predicate = std::function<bool(std::string_view line)>;

    /// Starts the program at programPath() with `--root`, `options` and the working directory
    /// `work`. Throws std::system_error when that fails.
    Daemon(const std::filesystem::path& root, const std::filesystem::path& work,
           Observer observer = {}, bool virtualClock = false,
           const std::vector<std::string>& options = {});
    ~Daemon();
    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;

    /// The environment variable TAVRIK_BIN, or the program of this build.
    static std::string programPath();
    /// Likewise TAVRIK_VIRTUAL_BIN, for the program with the virtual clock.
    static std::string virtualProgramPath();

    /// The file from which a virtual clock is read: "seconds microseconds speed patience".
    static std::filesystem::path clockFile(const std::filesystem::path& root);

    /// Waits for the next line of standard output that fits, and goes on after it: lines up to and
    /// including it are not seen by later calls. Nothing when `limit` passes first or the program
    /// ends.
    std::optional<std::string> waitForLine(const Predicate& fits, Milliseconds limit);
    std::optional<std::string> waitForLine(std::string_view whole, Milliseconds limit);

    /// Waits until the line `whole` is among those printed since the start, wherever it stands;
    /// later calls of waitForLine see as much as before. False when `limit` passes first.
    bool waitUntilPrinted(std::string_view whole, Milliseconds limit);

    /// Later calls of waitForLine see only lines that come after this moment.
    void skipLines();

    std::vector<std::string> lines() const;       ///< standard output; the last 50,000 lines
    std::vector<std::string> errorLines() const;  ///< standard error, likewise

    pid_t pid() const { return pid_; }
    bool running() const;  ///< false once the program has ended
    void signal(int number) const;

    // Readings of /proc; -1 when the program has ended.
    long peakMemoryKiB() const;
    int threads() const;
    int descriptors() const;
    double cpuSeconds() const;

 private:
    struct Stream {
        int fd = -1;
        std::string partial;            ///< the line so far
        std::deque<std::string> lines;  ///< bounded; the oldest go first
        std::size_t dropped = 0;        ///< lines that went
    };

    void launch(const std::filesystem::path& root, const std::filesystem::path& work,
                bool virtualClock, const std::vector<std::string>& options);
    void readAll();
    bool readSome(Stream& stream);
    void endLine(Stream& stream);
    std::string procFile(const char* name) const;
    long statusField(std::string_view key) const;

    Observer observer_;
    pid_t pid_ = -1;
    mutable std::mutex guard_;
    std::condition_variable changed_;
    Stream out_;
    Stream err_;
    std::size_t cursor_ = 0;  ///< number of the first output line that waitForLine has not passed
    bool ended_ = false;
    std::thread reader_;
};

}  // namespace rig
