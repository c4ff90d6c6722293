#include <csignal>
#include <cstdio>
#include <string_view>

#include "app/ending.h"
#include "app/inputevent.h"
#include "app/log_output.h"
#include "app/single.h"
#include "app/startup.h"
#include "base/path_prefix.h"
#include "base/singleton.h"
#include "base/state.h"
#include "input/supervisor.h"

namespace {

constexpr const char* kHelp =
    "usage: tavrik [--release-everything] [--root DIR]\n"
    "The console-side daemon of a networked keyboard, video and mouse wall.\n"
    "\n"
    "  --release-everything\n"
    "               no key and no button ever stays down at a computer: see tavrik(8)\n"
    "  --root DIR   a virtual board: DIR stands before every absolute path that is opened,\n"
    "               and shell commands are run only where DIR/bin has the program\n"
    "  --version    print the version and end\n"
    "  --help       print this text and end\n";

constexpr int kAlreadyRuns = 1;
constexpr int kUsageError = 2;

/// What the command line asks for: -1 to run, otherwise the exit status to end with.
int parseArguments(int count, char** arguments) {
    for (int i = 1; i < count; ++i) {
        const std::string_view option = arguments[i];
        if (option == "--help") {
            std::fputs(kHelp, stdout);
            return 0;
        }
        if (option == "--version") {
            std::printf("tavrik %s\n", kVersion);
            return 0;
        }
        if (option == "--release-everything") {
            releaseEverything = 1;
            continue;
        }
        if (option == "--root" && i + 1 < count && *arguments[i + 1] != '\0') {
            setPathPrefix(arguments[++i]);
            continue;
        }
        if (option == "--root") {
            std::fputs("tavrik: --root needs a directory\n", stderr);
        } else {
            std::fprintf(stderr, "tavrik: unknown option %s (see --help)\n", arguments[i]);
        }
        return kUsageError;
    }
    return -1;
}

}  // namespace

int main(int argc, char** argv) {
    const int status = parseArguments(argc, argv);
    if (status >= 0) {
        return status;
    }
    if (!becomeTheOnlyOne()) {
        std::fputs("tavrik: another console runs in this network namespace\n", stderr);
        return kAlreadyRuns;
    }
    std::signal(SIGPIPE, SIG_IGN);  // a log reader that went away must not end the console
    guardStandardStreams();
    letGoAtTheEnd();
    startLogWriter();
    const auto events = Singleton<inputevent_>::instance();
    startUp(*events);
    TimeCheckKeyEvent(events->forInput);
}
