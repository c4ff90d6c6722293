#include "rig/outside.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>

namespace rig {

OutsideProgram::OutsideProgram(const std::string& command) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe");
    }
    output_.reset(ends[0]);
    const Descriptor theirs(ends[1]);
    pid_ = fork();
    if (pid_ < 0) {
        throw std::system_error(errno, std::generic_category(), command);
    }
    if (pid_ == 0) {
        setpgid(0, 0);  // what the shell starts ends with it
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        fcntl(theirs, F_SETFL, 0);
        dup2(theirs, STDOUT_FILENO);
        execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
        _exit(127);
    }
}

OutsideProgram::~OutsideProgram() {
    kill(-pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
}

std::vector<std::string> OutsideProgram::lines() {
    std::array<char, 4096> part{};
    const ssize_t got = read(output_, part.data(), part.size());
    partial_.append(part.data(), got > 0 ? static_cast<std::size_t>(got) : 0);
    std::vector<std::string> whole;
    for (std::size_t end = partial_.find('\n'); end != std::string::npos;
         end = partial_.find('\n')) {
        whole.push_back(partial_.substr(0, end));
        partial_.erase(0, end + 1);
    }
    hasEnded_ = got == 0;
    return whole;
}

bool OutsideProgram::waitForLine(int timeoutMs) {
    pollfd ready{output_, POLLIN, 0};
    while (poll(&ready, 1, timeoutMs) == 1) {
        if (!lines().empty()) {
            return true;
        }
        if (hasEnded_) {
            return false;
        }
    }
    return false;
}

}  // namespace rig
