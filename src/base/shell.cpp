#include "base/shell.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "base/path_prefix.h"

namespace {

/// False for a program that a virtual board has not got.
bool isThere(std::string_view command) {
    const std::string program = "/bin/" + std::string(command.substr(0, command.find(' ')));
    return !hasPathPrefix() || access(prefixedPath(program).c_str(), X_OK) == 0;
}

/// This process's environment, with the prefixed /bin in front of the path.
class Environment {
 public:
    Environment() {
        for (char** entry = environ; *entry != nullptr; ++entry) {
            if (!hasPathPrefix() || !std::string_view(*entry).starts_with("PATH=")) {
                entries_.push_back(*entry);
            }
        }
        if (hasPathPrefix()) {
            const char* const before = std::getenv("PATH");
            path_ = "PATH=" + prefixedPath("/bin") + (before != nullptr ? ":" : "") +
                    (before != nullptr ? before : "");
            entries_.push_back(path_.data());
        }
        entries_.push_back(nullptr);
    }
    char* const* get() const { return entries_.data(); }

 private:
    std::string path_;
    std::vector<char*> entries_;
};

}  // namespace

void runShell(const char* command) {
    if (!isThere(command)) {
        return;
    }
    std::string text = command;
    std::string shell = "sh";
    std::string option = "-c";
    char* const arguments[] = {shell.data(), option.data(), text.data(), nullptr};
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    pid_t child = -1;
    const int problem =
        posix_spawn(&child, "/bin/sh", nullptr, &attributes, arguments, Environment().get());
    posix_spawnattr_destroy(&attributes);
    if (problem != 0) {
        std::fprintf(stderr, "%s: %s\n", command, std::strerror(problem));
        return;
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
}
