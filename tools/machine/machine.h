#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdio>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

/// An emulated machine: its serial console as lines and commands, its USB ports and what a person
/// does on its keyboard and mouse. Every wait is for a line. One thread uses it.
class Machine {
 public:
    /// Starts `command` (an emulator with its options; console and control are added). Everything
    /// the machine prints goes to the file `log` too. Throws std::runtime_error when it does not
    /// start.
    Machine(std::vector<std::string> command, const std::string& log);
    ~Machine();
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    /// Waits for a line that contains `text`, from behind the last one that was waited for. Returns
    /// it whole; empty when it did not come within `limit`.
    std::string await(std::string_view text, std::chrono::seconds limit = std::chrono::seconds(20));

    /// Runs a shell command in the machine and returns what it printed, without the lines of
    /// others; "failed: ..." when its status is not 0.
    std::string shell(const std::string& command);
    /// The same for a command that leaves something running, whose lines come as they are. False
    /// when its status is not 0.
    bool start(const std::string& command);

    /// What stands behind `mark` in the next `count` lines that have it, from behind the last ones
    /// so taken; fewer when they do not come within 10 s.
    std::vector<std::string> take(std::string_view mark, std::size_t count);
    /// Forgets the lines so far: `await` and `take` count only what comes behind them.
    void skip();

    void plug(std::string_view driver, std::string_view id);
    /// Returns when the machine has let go of the device.
    void unplug(std::string_view id);

    void key(std::string_view name, bool down);
    void button(std::string_view name, bool down);
    void move(int x, int y);

 private:
    std::string run(const std::string& command, const std::string& mark);
    bool readMore(std::chrono::steady_clock::time_point until);
    std::string control(const std::string& request, std::string_view awaited = R"("return")");
    std::string controlLine();
    void input(const std::string& events);

    pid_t pid_ = -1;
    int console_ = -1;
    int control_ = -1;
    std::FILE* log_ = nullptr;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::string partLine_;
    std::string partAnswer_;
    std::vector<std::string> lines_;
    std::size_t awaited_ = 0;  ///< the first line not yet waited for
    std::size_t taken_ = 0;    ///< the first line not yet taken
    int commands_ = 0;
};
