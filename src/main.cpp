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
    "usage: tavrik [options]\n"
    "The console-side daemon of a networked keyboard, video and mouse wall.\n"
    "\n"
    "  --release-everything\n"
    "               no key and no button ever stays down at a computer: see tavrik(8)\n"
    "  --allow-control ADDRESS[/BITS]\n"
    "               only these may command this console (repeatable)\n"
    "  --no-multicast\n"
    "               orders for the whole site are not for this console\n"
    "  --root DIR   a virtual board: DIR stands before every absolute path that is opened,\n"
    "               and shell commands are run only where DIR/bin has the program\n"
    "  --version    print the version and end\n"
    "  --help       print this text and end\n";

constexpr int kAlreadyRuns = 1;
constexpr int kUsageError = 2;

bool takeRoot(const char* directory) {
    if (directory == nullptr || *directory == '\0') {
        std::fputs("tavrik: --root needs a directory\n", stderr);
        return false;
    }
    setPathPrefix(directory);
    return true;
}

bool takeAllowed(const char* network, AllowedSenders& allowed) {
    const bool taken = network != nullptr && allowed.add(network);
    if (!taken) {
        std::fputs("tavrik: --allow-control needs an address or address/bits\n", stderr);
    }
    return taken;
}

/// What the command line asks for: -1 to run, otherwise the exit status to end with.
int parseArguments(int count, char** arguments, inputevent_& events) {
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
        bool good = true;  // behind the last argument stands a null
        if (option == "--release-everything") {
            releaseEverything = 1;
        } else if (option == "--no-multicast") {
            events.forCommands.joinsGroup = false;
        } else if (option == "--allow-control") {
            good = takeAllowed(arguments[++i], events.allowedSenders);
        } else if (option == "--root") {
            good = takeRoot(arguments[++i]);
        } else {
            std::fprintf(stderr, "tavrik: unknown option %s (see --help)\n", arguments[i]);
            good = false;
        }
        if (!good) {
            return kUsageError;
        }
    }
    return -1;
}

}  // namespace

int main(int argc, char** argv) {
    const auto events = Singleton<inputevent_>::instance();
    const int status = parseArguments(argc, argv, *events);
    if (status >= 0) {
        return status;
    }
    std::signal(SIGPIPE, SIG_IGN);  // a log reader that went away must not end the console
    guardStandardStreams();         // before anything can get the number of one that is closed
    if (!becomeTheOnlyOne()) {
        std::fputs("tavrik: another console runs in this network namespace\n", stderr);
        return kAlreadyRuns;
    }
    letGoAtTheEnd();
    startLogWriter();
    startUp(*events);
    TimeCheckKeyEvent(events->forInput);
}
