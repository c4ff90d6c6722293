#include "rig/daemon.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

namespace rig {
namespace {

constexpr std::size_t kMostLines = 50000;
constexpr std::size_t kLongestLine = 65536;

/// In the child: nothing but calls that are safe after a fork of a threaded process.
[[noreturn]] void become(const char* const* arguments, char* const* environment, const char* work,
                         int out, int err, pid_t parent) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int nothing = open("/dev/null", O_RDONLY);
    if (getppid() == parent && chdir(work) == 0 && dup2(nothing, 0) == 0 && dup2(out, 1) == 1 &&
        dup2(err, 2) == 2) {
        execve(arguments[0], const_cast<char* const*>(arguments), environment);
    }
    constexpr std::string_view kText = "cannot start the daemon's program\n";
    (void)!write(err, kText.data(), kText.size());
    _exit(127);
}

}  // namespace

std::string Daemon::programPath() {
    const char* chosen = std::getenv("TAVRIK_BIN");
    return chosen != nullptr ? chosen : TAVRIK_BIN;
}

std::string Daemon::virtualProgramPath() {
    const char* chosen = std::getenv("TAVRIK_VIRTUAL_BIN");
    return chosen != nullptr ? chosen : TAVRIK_VIRTUAL_BIN;
}

fs::path Daemon::clockFile(const fs::path& root) { return root / "clock"; }

Daemon::Daemon(const fs::path& root, const fs::path& work, Observer observer, bool virtualClock,
               const std::vector<std::string>& options)
    : observer_(std::move(observer)) {
    launch(root, work, virtualClock, options);
    reader_ = std::thread(&Daemon::readAll, this);
}

Daemon::~Daemon() {
    signal(SIGKILL);
    reader_.join();
    close(out_.fd);
    close(err_.fd);
    waitpid(pid_, nullptr, 0);
}

void Daemon::launch(const fs::path& root, const fs::path& work, bool virtualClock,
                    const std::vector<std::string>& options) {
    std::array<int, 2> out{};
    std::array<int, 2> err{};
    if (pipe2(out.data(), O_CLOEXEC) != 0 || pipe2(err.data(), O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe");
    }
    const std::string program =
        fs::absolute(virtualClock ? virtualProgramPath() : programPath()).string();
    std::string clock = "TAVRIK_CLOCK=" + clockFile(root).string();
    std::vector<char*> variables;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        variables.push_back(*entry);
    }
    variables.push_back(clock.data());
    variables.push_back(nullptr);
    std::vector<const char*> arguments{program.c_str(), "--root", root.c_str()};
    for (const std::string& option : options) {
        arguments.push_back(option.c_str());
    }
    arguments.push_back(nullptr);
    const pid_t parent = getpid();
    pid_ = fork();
    if (pid_ == 0) {
        become(arguments.data(), variables.data(), work.c_str(), out[1], err[1], parent);
    }
    if (pid_ < 0) {
        throw std::system_error(errno, std::generic_category(), "fork");
    }
    close(out[1]);
    close(err[1]);
    out_.fd = out[0];
    err_.fd = err[0];
}

void Daemon::readAll() {
    std::array<pollfd, 2> waits{{{out_.fd, POLLIN, 0}, {err_.fd, POLLIN, 0}}};
    while ((waits[0].fd >= 0 || waits[1].fd >= 0) &&
           (poll(waits.data(), waits.size(), -1) >= 0 || errno == EINTR)) {
        if (waits[0].revents != 0 && !readSome(out_)) {
            waits[0].fd = -1;
        }
        if (waits[1].revents != 0 && !readSome(err_)) {
            waits[1].fd = -1;
        }
    }
    {
        const std::lock_guard hold(guard_);
        ended_ = true;
    }
    changed_.notify_all();
}

bool Daemon::readSome(Stream& stream) {
    std::array<char, 4096> buffer{};
    const ssize_t got = read(stream.fd, buffer.data(), buffer.size());
    for (ssize_t i = 0; i < got; ++i) {
        const char byte = buffer[static_cast<std::size_t>(i)];
        if (byte != '\n' && stream.partial.size() < kLongestLine) {
            stream.partial += byte;
        } else {
            endLine(stream);
        }
    }
    if (got <= 0 && !stream.partial.empty()) {
        endLine(stream);
    }
    return got > 0;
}

void Daemon::endLine(Stream& stream) {
    if (observer_) {
        observer_(stream.partial);
    }
    {
        const std::lock_guard hold(guard_);
        stream.lines.push_back(std::exchange(stream.partial, {}));
        if (stream.lines.size() > kMostLines) {
            stream.lines.pop_front();
            ++stream.dropped;
        }
    }
    changed_.notify_all();
}

std::optional<std::string> Daemon::waitForLine(const Predicate& fits, Milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    std::unique_lock hold(guard_);
    std::size_t seen = std::max(cursor_, out_.dropped);
    for (;;) {
        for (; seen < out_.dropped + out_.lines.size(); ++seen) {
            const std::string& line = out_.lines[seen - out_.dropped];
            if (fits(line)) {
                cursor_ = seen + 1;
                return line;
            }
        }
        if (ended_ || changed_.wait_until(hold, end) == std::cv_status::timeout) {
            return std::nullopt;
        }
        seen = std::max(seen, out_.dropped);
    }
}

std::optional<std::string> Daemon::waitForLine(std::string_view whole, Milliseconds limit) {
    return waitForLine([whole](std::string_view line) { return line == whole; }, limit);
}

bool Daemon::waitUntilPrinted(std::string_view whole, Milliseconds limit) {
    std::unique_lock hold(guard_);
    return changed_.wait_for(hold, limit, [&] {
        return std::find(out_.lines.rbegin(), out_.lines.rend(), whole) != out_.lines.rend();
    });
}

void Daemon::skipLines() {
    const std::lock_guard hold(guard_);
    cursor_ = out_.dropped + out_.lines.size();
}

std::vector<std::string> Daemon::lines() const {
    const std::lock_guard hold(guard_);
    return {out_.lines.begin(), out_.lines.end()};
}

std::vector<std::string> Daemon::errorLines() const {
    const std::lock_guard hold(guard_);
    return {err_.lines.begin(), err_.lines.end()};
}

bool Daemon::running() const {
    const std::lock_guard hold(guard_);
    return !ended_;
}

void Daemon::signal(int number) const { kill(pid_, number); }

std::string Daemon::procFile(const char* name) const {
    std::ostringstream text;
    text << std::ifstream("/proc/" + std::to_string(pid_) + "/" + name).rdbuf();
    return text.str();
}

long Daemon::statusField(std::string_view key) const {
    const std::string text = procFile("status");
    const std::string label = std::string(key) + ":";
    const std::size_t at = text.find(label);
    return at == std::string::npos ? -1 : std::atol(text.c_str() + at + label.size());
}

long Daemon::peakMemoryKiB() const { return statusField("VmHWM"); }

int Daemon::threads() const { return static_cast<int>(statusField("Threads")); }

int Daemon::descriptors() const {
    std::error_code problem;
    int count = 0;
    for (const auto& entry :
         fs::directory_iterator("/proc/" + std::to_string(pid_) + "/fd", problem)) {
        count += entry.path().empty() ? 0 : 1;
    }
    return problem ? -1 : count;
}

double Daemon::cpuSeconds() const {
    const std::string text = procFile("stat");
    const std::size_t name = text.rfind(')');
    if (name == std::string::npos) {
        return -1;
    }
    std::istringstream fields(text.substr(name + 1));
    std::string skipped;
    for (int i = 0; i < 11; ++i) {  // from the state up to the field before the user time
        fields >> skipped;
    }
    double user = 0;
    double system = 0;
    fields >> user >> system;
    return (user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

}  // namespace rig
