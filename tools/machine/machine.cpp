#include "machine/machine.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <optional>
#include <stdexcept>

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds kControlLimit{20};

std::array<int, 2> socketPair() {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) != 0) {
        throw std::runtime_error("socketpair failed");
    }
    return ends;
}

int millisecondsTo(Clock::time_point until) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now()).count();
    return static_cast<int>(std::max<long long>(left, 0));
}

bool waitReadable(int fd, Clock::time_point until) {
    pollfd wait{fd, POLLIN, 0};
    return poll(&wait, 1, millisecondsTo(until)) == 1;
}

void writeAll(int fd, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = send(fd, text.data(), text.size(), MSG_NOSIGNAL);
        if (written <= 0) {
            throw std::runtime_error("the emulator has ended");
        }
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

[[noreturn]] void runEmulator(const std::vector<std::string>& command) {
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& word : command) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    execvp(arguments[0], arguments.data());
    std::perror(arguments[0]);
    _exit(127);
}

/// What stands behind `mark`. A program's line comes whole, but perhaps behind a part of the
/// daemon's, whose log goes on when the console takes more.
std::optional<std::string> behind(const std::string& line, std::string_view mark) {
    const std::size_t at = line.find(mark);
    return at == line.npos ? std::nullopt : std::optional(line.substr(at + mark.size()));
}

}  // namespace

Machine::Machine(std::vector<std::string> command, const std::string& log) {
    log_ = std::fopen(log.c_str(), "w");
    if (log_ == nullptr) {
        throw std::runtime_error("cannot write " + log);
    }
    const auto console = socketPair();
    const auto control = socketPair();
    for (const char* word : {"-nodefaults", "-display", "none", "-no-reboot", "-chardev"}) {
        command.emplace_back(word);
    }
    command.push_back("socket,id=console,fd=" + std::to_string(console[1]));
    command.insert(command.end(), {"-serial", "chardev:console", "-chardev"});
    command.push_back("socket,id=control,fd=" + std::to_string(control[1]));
    command.insert(command.end(), {"-mon", "chardev=control,mode=control"});
    pid_ = fork();
    if (pid_ == 0) {
        close(console[0]);
        close(control[0]);
        runEmulator(command);
    }
    close(console[1]);
    close(control[1]);
    console_ = console[0];
    control_ = control[0];
    controlLine();  // the greeting
    this->control(R"({"execute":"qmp_capabilities"})");
}

Machine::~Machine() {
    close(console_);
    close(control_);
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
    std::fclose(log_);
}

bool Machine::readMore(Clock::time_point until) {
    if (!waitReadable(console_, until)) {
        return false;
    }
    std::array<char, 4096> buffer{};
    const ssize_t got = read(console_, buffer.data(), buffer.size());
    if (got <= 0) {
        return false;
    }
    for (const char letter : std::string_view(buffer.data(), static_cast<std::size_t>(got))) {
        if (letter == '\n') {
            const std::chrono::duration<double> since = Clock::now() - start_;
            std::fprintf(log_, "%8.3f %s\n", since.count(), partLine_.c_str());
            std::fflush(log_);
            lines_.push_back(std::move(partLine_));
            partLine_.clear();
        } else if (letter != '\r') {
            partLine_ += letter;
        }
    }
    return true;
}

std::string Machine::await(std::string_view text, std::chrono::seconds limit) {
    const auto until = Clock::now() + limit;
    for (;;) {
        while (awaited_ < lines_.size()) {
            const std::string& line = lines_[awaited_++];
            if (line.find(text) != std::string::npos) {
                return line;
            }
        }
        if (!readMore(until)) {
            return "";
        }
    }
}

std::string Machine::run(const std::string& command, const std::string& mark) {
    const std::string end = "## " + std::to_string(commands_) + ' ';
    const std::size_t first = lines_.size();
    writeAll(console_, std::to_string(commands_) + ' ' + command + '\n');
    const auto until = Clock::now() + kControlLimit;
    std::string output;
    for (std::size_t at = first;; ++at) {
        while (at >= lines_.size()) {
            if (!readMore(until)) {
                return "failed: no end of " + command;
            }
        }
        if (const auto status = behind(lines_[at], end)) {
            return *status == "0" ? output : "failed: " + command;
        }
        const auto printed = mark.empty() ? std::nullopt : behind(lines_[at], mark);
        if (printed) {
            output.append(output.empty() ? "" : "\n").append(*printed);
        }
    }
}

std::string Machine::shell(const std::string& command) {
    // The mark keeps the command's lines apart from those that others print meanwhile.
    std::string mark = "#";
    mark.append(std::to_string(++commands_)).append("#");
    return run("{ " + command + "; } | sed 's/^/" + mark + "/'", mark);
}

bool Machine::start(const std::string& command) {
    ++commands_;
    return run(command, "").empty();
}

std::vector<std::string> Machine::take(std::string_view mark, std::size_t count) {
    const auto until = Clock::now() + std::chrono::seconds(10);
    std::vector<std::string> found;
    while (found.size() < count) {
        while (taken_ >= lines_.size()) {
            if (!readMore(until)) {
                return found;
            }
        }
        if (auto rest = behind(lines_[taken_++], mark)) {
            found.push_back(std::move(*rest));
        }
    }
    return found;
}

void Machine::skip() { awaited_ = taken_ = lines_.size(); }

std::string Machine::controlLine() {
    const auto until = Clock::now() + kControlLimit;
    for (;;) {
        const std::size_t end = partAnswer_.find('\n');
        if (end != std::string::npos) {
            std::string line = partAnswer_.substr(0, end);
            partAnswer_.erase(0, end + 1);
            return line;
        }
        // The emulator stands still while its console is not read.
        std::array<pollfd, 2> wait{{{control_, POLLIN, 0}, {console_, POLLIN, 0}}};
        if (poll(wait.data(), wait.size(), millisecondsTo(until)) < 1) {
            throw std::runtime_error("no answer of the emulator");
        }
        if ((wait[1].revents & POLLIN) != 0) {
            readMore(until);
        }
        if ((wait[0].revents & POLLIN) == 0) {
            continue;
        }
        std::array<char, 4096> buffer{};
        const ssize_t got = read(control_, buffer.data(), buffer.size());
        if (got <= 0) {
            throw std::runtime_error("the emulator has ended");
        }
        partAnswer_.append(buffer.data(), static_cast<std::size_t>(got));
    }
}

std::string Machine::control(const std::string& request, std::string_view awaited) {
    writeAll(control_, request + '\n');
    for (;;) {
        std::string line = controlLine();
        if (line.find(R"("error")") != std::string::npos) {
            throw std::runtime_error(std::string("refused: ").append(request).append(": ") + line);
        }
        if (line.find(awaited) != std::string::npos) {
            return line;
        }
    }
}

void Machine::plug(std::string_view driver, std::string_view id) {
    control(R"({"execute":"device_add","arguments":{"bus":"usb.0","driver":")" +
            std::string(driver) + R"(","id":")" + std::string(id) + R"("}})");
}

void Machine::unplug(std::string_view id) {
    control(R"({"execute":"device_del","arguments":{"id":")" + std::string(id) + R"("}})",
            R"("DEVICE_DELETED")");
}

void Machine::input(const std::string& events) {
    control(R"({"execute":"input-send-event","arguments":{"events":[)" + events + "]}}");
}

void Machine::key(std::string_view name, bool down) {
    input(R"({"type":"key","data":{"down":)" + std::string(down ? "true" : "false") +
          R"(,"key":{"type":"qcode","data":")" + std::string(name) + R"("}}})");
}

void Machine::button(std::string_view name, bool down) {
    input(R"({"type":"btn","data":{"down":)" + std::string(down ? "true" : "false") +
          R"(,"button":")" + std::string(name) + R"("}})");
}

void Machine::move(int x, int y) {
    const auto axis = [](const char* name, int value) {
        return R"({"type":"rel","data":{"axis":")" + std::string(name) + R"(","value":)" +
               std::to_string(value) + "}}";
    };
    input(axis("x", x) + ',' + axis("y", y));
}
