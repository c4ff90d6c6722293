#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>

#include <csignal>
#include <cstdio>
#include <filesystem>

#include "rig/isolation.h"

/// Every test program runs in a network of its own, so that its ports are its alone. Where the
/// machine does not allow that, they take turns: the lock is held until the process ends.
static bool waitForTurn() {
    const auto path = std::filesystem::temp_directory_path() / "tavrik-tests.lock";
    const int fd = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    return fd >= 0 && flock(fd, LOCK_EX) == 0;
}

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);  // a node whose reader just went takes no record, that is all
    testing::InitGoogleTest(&argc, argv);
    if (!GTEST_FLAG_GET(list_tests) && !rig::enterOwnNetwork() && !waitForTurn()) {
        std::perror("tests: lock file");
        return 1;
    }
    return RUN_ALL_TESTS();
}
