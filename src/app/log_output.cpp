#include "app/log_output.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>

namespace {

constexpr int kPatienceMilliseconds = 1000;
/// A pipe that polls writable takes this much without waiting (PIPE_BUF).
constexpr std::size_t kChunk = 4096;

bool isWritable(const LogSink& sink) {
    pollfd wait{sink.fd, POLLOUT, 0};
    return poll(&wait, 1, sink.leftOut == 0 ? kPatienceMilliseconds : 0) == 1;
}

void tellLeftOut(LogSink& sink) {
    std::array<char, 64> line{};
    const int length = std::snprintf(
        line.data(), line.size(), "\nlog reader stood still, left out %zu bytes\n", sink.leftOut);
    sink.leftOut = 0;
    (void)!write(sink.fd, line.data(), static_cast<std::size_t>(length));
}

/// The descriptor, or -1 when the program was started without it: a file or socket may get its
/// number later, and no line may go there.
int openAtStart(int fd) { return fcntl(fd, F_GETFD) >= 0 ? fd : -1; }

/// stdio's write function. It takes everything, so that stdio never keeps or repeats anything.
ssize_t writeLog(void* cookie, const char* bytes, std::size_t count) {
    auto& sink = *static_cast<LogSink*>(cookie);
    std::size_t done = sink.fd < 0 ? count : 0;
    while (done < count) {
        if (!isWritable(sink)) {
            sink.leftOut += count - done;
            break;
        }
        if (sink.leftOut != 0) {
            tellLeftOut(sink);
            continue;
        }
        const ssize_t written = write(sink.fd, bytes + done, std::min(kChunk, count - done));
        if (written > 0) {
            done += static_cast<std::size_t>(written);
        } else if (errno != EINTR && errno != EAGAIN) {
            break;  // the reader is gone
        }
    }
    return static_cast<ssize_t>(count);
}

}  // namespace

std::FILE* openLogStream(LogSink& sink) {
    cookie_io_functions_t functions{};
    functions.write = writeLog;
    std::FILE* stream = fopencookie(&sink, "w", functions);
    if (stream != nullptr) {
        std::setvbuf(stream, nullptr, _IOLBF, BUFSIZ);
    }
    return stream;
}

void guardStandardStreams() {
    static LogSink outSink{openAtStart(STDOUT_FILENO)};
    static LogSink errSink{openAtStart(STDERR_FILENO)};
    if (std::FILE* out = openLogStream(outSink)) {
        stdout = out;
    }
    if (std::FILE* err = openLogStream(errSink)) {
        stderr = err;
    }
}
