#include "base/log_queue.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace {

constexpr std::size_t kWakeAnyway = std::size_t{32} << 10;
constexpr int kTakeOverMilliseconds = 50;

thread_local bool defers = false;

void sleepAMillisecond() {
    const timespec rest{0, 1'000'000};
    nanosleep(&rest, nullptr);
}

/// Bytes written: fewer than asked when the reader took no more at once, all of them when it will
/// never take any.
std::size_t writeSome(int fd, const char* bytes, std::size_t size) {
    const ssize_t written = write(fd, bytes, size);
    if (written >= 0) {
        return static_cast<std::size_t>(written);
    }
    return errno == EAGAIN || errno == EINTR ? 0 : size;
}

}  // namespace

LogQueue::LogQueue() : bytes_(new char[kSize]) { sem_init(&wake_, 0, 0); }

bool LogQueue::hasRoom(std::size_t size) const {
    return tail_ - head_ + sizeof(Header) + size <= kSize;
}

void LogQueue::copyIn(std::size_t at, const void* bytes, std::size_t size) {
    const std::size_t begin = at % kSize;
    const std::size_t first = std::min(size, kSize - begin);
    std::memcpy(bytes_.get() + begin, bytes, first);
    std::memcpy(bytes_.get(), static_cast<const char*>(bytes) + first, size - first);
}

void LogQueue::copyOut(std::size_t at, void* bytes, std::size_t size) const {
    const std::size_t begin = at % kSize;
    const std::size_t first = std::min(size, kSize - begin);
    std::memcpy(bytes, bytes_.get() + begin, first);
    std::memcpy(static_cast<char*>(bytes) + first, bytes_.get(), size - first);
}

LogQueue::Header LogQueue::headerAt(std::size_t at) const {
    Header header;
    copyOut(at, &header, sizeof header);
    return header;
}

/// Under the guard, and only with room for it.
void LogQueue::put(int fd, std::string_view bytes) {
    if (isEmpty()) {
        tail_ = 0;
        head_ = 0;
    }
    const Header header{static_cast<std::uint32_t>(bytes.size()), fd};
    copyIn(tail_, &header, sizeof header);
    copyIn(tail_ + sizeof header, bytes.data(), bytes.size());
    tail_ += sizeof header + bytes.size();
}

/// Under the guard. False when there is no room for that and for `next` bytes behind it.
bool LogQueue::tellLeftOut(std::size_t next) {
    if (leftOut_ == 0) {
        return true;
    }
    std::array<char, 64> line{};
    const int length = std::snprintf(line.data(), line.size(),
                                     "log reader stood still, left out %zu bytes\n", leftOut_);
    const std::string_view text(line.data(), static_cast<std::size_t>(length));
    if (!hasRoom(text.size() + sizeof(Header) + next)) {
        return false;
    }
    leftOut_ = 0;
    put(leftOutFd_, text);
    return true;
}

void LogQueue::append(int fd, std::string_view bytes) {
    if (fd < 0 || bytes.empty()) {
        return;
    }
    bool wakes = false;
    {
        const std::lock_guard hold(guard_);
        if (hasRoom(bytes.size()) && tellLeftOut(bytes.size())) {
            put(fd, bytes);
        } else {
            leftOutFd_ = leftOut_ == 0 ? fd : leftOutFd_;
            leftOut_ += bytes.size();
        }
        wakes = sleeps_ && (!defers || tail_ - head_ > kWakeAnyway);
        sleeps_ = sleeps_ && !wakes;
    }
    if (wakes) {
        sem_post(&wake_);
    }
}

void LogQueue::letLeave() {
    bool wakes = false;
    {
        const std::lock_guard hold(guard_);
        wakes = sleeps_ && !isEmpty();
        sleeps_ = sleeps_ && !wakes;
    }
    if (wakes) {
        sem_post(&wake_);
    }
}

void LogQueue::wait() {
    {
        const std::lock_guard hold(guard_);
        if (!isEmpty()) {
            return;
        }
        sleeps_ = true;
    }
    while (sem_wait(&wake_) != 0 && errno == EINTR) {
    }
}

bool LogQueue::claim(Owner owner) {
    Owner nobody = Owner::kNobody;
    return owner_.compare_exchange_strong(nobody, owner);
}

/// The next entries of one descriptor, from behind what is written. False when there is none.
bool LogQueue::nextBatch(Batch& batch) {
    const std::size_t end = tail_;
    batch.size = 0;
    std::size_t skip = begun_;
    for (std::size_t at = head_; at < end;) {
        const Header header = headerAt(at);
        if (batch.size == 0) {
            batch.fd = header.fd;
        }
        const std::size_t size =
            std::min<std::size_t>(header.size - skip, batch.bytes.size() - batch.size);
        if (header.fd != batch.fd || size == 0) {
            break;
        }
        copyOut(at + sizeof header + skip, batch.bytes.data() + batch.size, size);
        batch.size += size;
        skip = 0;
        at += sizeof header + header.size;
    }
    return batch.size > 0;
}

/// So many bytes of the first entries are written.
void LogQueue::advance(std::size_t written) {
    while (written > 0) {
        const Header header = headerAt(head_);
        const std::size_t left = header.size - begun_;
        if (written < left) {
            begun_ += written;
            return;
        }
        written -= left;
        begun_ = 0;
        head_ += sizeof header + header.size;
    }
}

void LogQueue::writeOut() {
    for (;;) {
        while (!claim(Owner::kWriter)) {
            sleepAMillisecond();  // a crash has it, for good
        }
        bool more = false;
        {
            const std::lock_guard hold(guard_);
            more = nextBatch(batch_) || (leftOut_ > 0 && tellLeftOut(0) && nextBatch(batch_));
        }
        std::size_t written = 0;
        if (more) {
            written = writeSome(batch_.fd, batch_.bytes.data(), batch_.size);
            const std::lock_guard hold(guard_);
            advance(written);
        }
        const int fd = batch_.fd;
        owner_ = Owner::kNobody;
        if (!more) {
            return;
        }
        if (written == 0) {
            pollfd room{fd, POLLOUT, 0};
            poll(&room, 1, -1);
        }
    }
}

bool LogQueue::waitUntilWritten(int milliseconds) {
    letLeave();
    for (int waited = 0;; ++waited) {
        {
            const std::lock_guard hold(guard_);
            if (isEmpty() && leftOut_ == 0) {
                return true;
            }
        }
        if (waited >= milliseconds) {
            return false;
        }
        sleepAMillisecond();
    }
}

void LogQueue::writeAtACrash() {
    for (int waited = 0; !claim(Owner::kCrash); ++waited) {
        if (waited >= kTakeOverMilliseconds) {
            return;
        }
        sleepAMillisecond();
    }
    for (int refused = 0; refused < kTakeOverMilliseconds && nextBatch(batch_);) {
        const std::size_t written = writeSome(batch_.fd, batch_.bytes.data(), batch_.size);
        advance(written);
        if (written == 0) {
            sleepAMillisecond();
            ++refused;
        }
    }
}

LogQueue& logQueue() {
    static auto* const queue = new LogQueue;  // outlives every thread
    return *queue;
}

DeferredLog::DeferredLog() { defers = true; }

DeferredLog::~DeferredLog() {
    defers = false;
    letLogLeave();
}

void letLogLeave() { logQueue().letLeave(); }
