#include "rig/tool.h"

#include <csignal>
#include <cstdio>
#include <exception>

namespace rig {

int runTool(const char* name, int (*run)(int argc, char** argv), int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    try {
        return run(argc, argv);
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "%s: %s\n", name, problem.what());
        return 1;
    }
}

}  // namespace rig
