#include <getopt.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "app/ending.h"
#include "app/inputevent.h"
#include "app/log_output.h"
#include "app/single.h"
#include "app/startup.h"
#include "app/user_list.h"
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
    "  --hide-keys  no line of the log tells which key was pressed\n"
    "  --allow-control ADDRESS[/BITS]\n"
    "               only these may command this console (repeatable)\n"
    "  --no-multicast\n"
    "               orders for the whole site are not for this console\n"
    "  --root DIR   a virtual board: DIR stands before every absolute path that is opened,\n"
    "               and shell commands are run only where DIR/bin has the program\n"
    "  -V, --version\n"
    "               print the version and end\n"
    "  -h, --help   print this text and end\n";

constexpr int kAlreadyRuns = 1;
constexpr int kUsageError = 2;
constexpr int kUnusableFile = 78;  ///< EX_CONFIG: starting again does not help

bool takeRoot(const char* directory) {
    if (*directory == '\0') {
        std::fputs("tavrik: --root needs a directory\n", stderr);
        return false;
    }
    struct stat info {};
    const bool isThere = stat(directory, &info) == 0;
    if (!isThere || !S_ISDIR(info.st_mode)) {
        std::fprintf(stderr, "tavrik: --root %s: %s\n", directory,
                     std::strerror(isThere ? ENOTDIR : errno));
        return false;
    }
    setPathPrefix(directory);
    return true;
}

bool takeAllowed(const char* network, AllowedSenders& allowed) {
    const bool taken = allowed.add(network);
    if (!taken) {
        std::fputs("tavrik: --allow-control needs an address or address/bits\n", stderr);
    }
    return taken;
}

enum Option { kReleaseEverything = 256, kHideKeys, kAllowControl, kNoMulticast, kRoot };
constexpr std::array<option, 8> kOptions{{
    {"release-everything", no_argument, nullptr, kReleaseEverything},
    {"hide-keys", no_argument, nullptr, kHideKeys},
    {"allow-control", required_argument, nullptr, kAllowControl},
    {"no-multicast", no_argument, nullptr, kNoMulticast},
    {"root", required_argument, nullptr, kRoot},
    {"version", no_argument, nullptr, 'V'},
    {"help", no_argument, nullptr, 'h'},
    {nullptr, 0, nullptr, 0},
}};

/// Takes one option that makes no difference but to how the console runs; false when it cannot be
/// meant so.
bool take(int option, inputevent_& events) {
    switch (option) {
        case kReleaseEverything:
            releaseEverything = 1;
            return true;
        case kHideKeys:
            hideKeys = 1;
            return true;
        case kNoMulticast:
            events.forCommands.joinsGroup = false;
            return true;
        case kAllowControl:
            return takeAllowed(optarg, events.allowedSenders);
        case kRoot:
            return takeRoot(optarg);
        default:
            return false;
    }
}

/// What the command line asks for: -1 to run, otherwise the exit status to end with.
int parseArguments(int count, char** arguments, inputevent_& events) {
    opterr = 0;  // the texts are our own
    for (int found = 0;
         (found = getopt_long(count, arguments, "+:hV", kOptions.data(), nullptr)) != -1;) {
        if (found == 'h') {
            std::fputs(kHelp, stdout);
            return 0;
        }
        if (found == 'V') {
            std::printf("tavrik %s\n", kVersion);
            return 0;
        }
        if (found == '?' || found == ':') {
            std::fprintf(stderr, "tavrik: %s %s (see --help)\n",
                         found == '?' ? "unknown option" : "no value behind",
                         arguments[optind - 1]);
            return kUsageError;
        }
        if (!take(found, events)) {
            return kUsageError;
        }
    }
    if (optind < count) {
        std::fprintf(stderr, "tavrik: unexpected argument %s (see --help)\n", arguments[optind]);
        return kUsageError;
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
    try {
        startUp(*events);
    } catch (const UnusableUserList& problem) {
        std::printf("%s: the console cannot start\n", problem.what());
        return kUnusableFile;
    }
    TimeCheckKeyEvent(events->forInput);
}
