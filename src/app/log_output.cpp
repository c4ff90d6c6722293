#include "app/log_output.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/types.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>

#include "base/log_queue.h"
#include "base/text.h"
#include "base/thread.h"

namespace {

constexpr int kExitMilliseconds = 200;
constexpr unsigned kCrashSeconds = 1;
constexpr int kPriority = 0;
constexpr int kPolicy = 1;  // SCHED_FIFO
constexpr int kDetached = 1;
constexpr int kNice = 10;

bool writerRuns = false;
volatile std::sig_atomic_t crashSignal = SIGABRT;

/// stdio's write function. It takes everything, so that stdio never keeps or repeats anything.
ssize_t appendToLog(void* cookie, const char* bytes, std::size_t count) {
    const std::string_view text{bytes, count};
    const int fd = *static_cast<const int*>(cookie);
    if (hasNoControls(text)) {
        logQueue().append(fd, text);
    } else {
        logQueue().append(fd, withoutControls(text));
    }
    return static_cast<ssize_t>(count);
}

std::FILE* openLogStream(int& fd) {
    cookie_io_functions_t functions{};
    functions.write = appendToLog;
    std::FILE* stream = fopencookie(&fd, "w", functions);
    if (stream != nullptr) {
        std::setvbuf(stream, nullptr, _IOLBF, BUFSIZ);
    }
    return stream;
}

/// The descriptor, or -1 when the program was started without it: a file or socket may get its
/// number later, and no line may go there.
int openAtStart(int fd) { return fcntl(fd, F_GETFD) >= 0 ? fd : -1; }

void finishAtExit() { finishLog(kExitMilliseconds); }

void endByCrashSignal(int /*number*/) {
    std::signal(crashSignal, SIG_DFL);
    std::raise(crashSignal);
}

/// The signal is blocked while its handler runs; it ends the process as if nobody had caught it.
void writeAndCrash(int number) {
    crashSignal = number;
    std::signal(SIGALRM, endByCrashSignal);  // a reader that stalls only now
    alarm(kCrashSeconds);
    logQueue().writeAtACrash();
    std::signal(number, SIG_DFL);
    std::raise(number);
}

/// A sanitizer's own handlers stay.
void catchCrashes() {
    for (const int number : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL}) {
        struct sigaction action {};
        if (sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_DFL) {
            std::signal(number, writeAndCrash);
        }
    }
}

/// It stands back behind the threads that carry input.
[[noreturn]] void* writeLog(void* /*unused*/) {
    setpriority(PRIO_PROCESS, 0, kNice);  // of this thread alone
    for (;;) {
        logQueue().wait();
        logQueue().writeOut();
    }
}

}  // namespace

void guardStandardStreams() {
    static int outFd = openAtStart(STDOUT_FILENO);
    static int errFd = openAtStart(STDERR_FILENO);
    if (std::FILE* out = openLogStream(outFd)) {
        stdout = out;
    }
    if (std::FILE* err = openLogStream(errFd)) {
        stderr = err;
    }
    std::atexit(finishAtExit);
    catchCrashes();
}

void startLogWriter() {
    int problem = 0;
    writerRuns = CreateThread(writeLog, kPriority, kPolicy, kDetached, nullptr, &problem) != 0 &&
                 problem == 0;
}

void finishLog(int milliseconds) {
    std::fflush(stdout);
    std::fflush(stderr);
    if (writerRuns) {
        logQueue().waitUntilWritten(milliseconds);
    } else {
        logQueue().writeOut();
    }
}
