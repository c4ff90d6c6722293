#include "app/ending.h"

#include <pthread.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <initializer_list>

#include "app/log_output.h"
#include "base/thread.h"
#include "remote/handover.h"

namespace {

/// How long the end waits for a report that is on its way, and then for the reader of the log.
constexpr std::int64_t kPatienceMicroseconds = 200'000;
constexpr int kLogMilliseconds = 50;
constexpr int kShellStatusOfSignals = 128;
constexpr int kPriority = 0;
constexpr int kPolicy = 1;  // SCHED_FIFO
constexpr int kDetached = 1;

/// Those that the parent had not ignored.
const sigset_t& endingSignals() {
    static const sigset_t kSet = [] {
        sigset_t set;
        sigemptyset(&set);
        for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
            struct sigaction action {};
            if (sigaction(number, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) {
                sigaddset(&set, number);
            }
        }
        return set;
    }();
    return kSet;
}

/// Ends the process by the signal, as if nobody had caught it.
[[noreturn]] void endBy(int number) {
    std::signal(number, SIG_DFL);
    sigset_t one;
    sigemptyset(&one);
    sigaddset(&one, number);
    pthread_sigmask(SIG_UNBLOCK, &one, nullptr);
    raise(number);
    _exit(kShellStatusOfSignals + number);  // the first process of a container is spared by it
}

void* waitForTheEnd(void* /*unused*/) {
    const sigset_t& signals = endingSignals();
    int number = 0;
    while (sigwait(&signals, &number) != 0) {
    }
    endControl(kPatienceMicroseconds);
    finishLog(kLogMilliseconds);
    endBy(number);
}

}  // namespace

void letGoAtTheEnd() {
    const sigset_t& signals = endingSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    int problem = 0;
    if (CreateThread(waitForTheEnd, kPriority, kPolicy, kDetached, nullptr, &problem) == 0 ||
        problem != 0) {
        pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    }
}
