#pragma once

#include <semaphore.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string_view>

/// The printed lines on their way out: whoever prints appends and goes on, one writer empties the
/// queue and waits for the reader as long as it takes.
///
///   printf ──► append ──► [ 256 KiB ] ──► writeOut (the writer) ──► the descriptor of each entry
///                             └─ no room: left out, counted, told in one line in that place
///
/// Standard output and standard error share it, so they leave in the order in which they were
/// printed. Unless said otherwise any thread may call any member.
class LogQueue {
 public:
    static constexpr std::size_t kSize = std::size_t{256} << 10;

    LogQueue();
    LogQueue(const LogQueue&) = delete;
    LogQueue& operator=(const LogQueue&) = delete;

    /// Appends `bytes` for the descriptor `fd`, whole or not at all; nothing for -1. Wakes the
    /// writer, unless the calling thread defers that.
    void append(int fd, std::string_view bytes);

    /// Wakes the writer if something waits for it.
    void letLeave();

    /// Waits until something is to be written. The writer's thread.
    void wait();

    /// Writes until nothing is left, one call for neighbours of one descriptor; what its reader
    /// will not take any more is dropped. The writer's thread, and no other beside it.
    void writeOut();

    /// Waits until everything is written, at most `milliseconds`. False when that was too short.
    bool waitUntilWritten(int milliseconds);

    /// For a crash: takes the queue over from the writer, if that lets go of it within 50 ms, and
    /// writes the rest. It uses write(2), sleeps and atomics alone. Any thread, also in a signal
    /// handler.
    void writeAtACrash();

 private:
    struct Header {
        std::uint32_t size = 0;
        std::int32_t fd = -1;
    };
    /// Neighbours of one descriptor, copied out.
    struct Batch {
        int fd = -1;
        std::size_t size = 0;
        std::array<char, 16384> bytes;
    };
    enum class Owner : int { kNobody, kWriter, kCrash };

    bool hasRoom(std::size_t size) const;
    void put(int fd, std::string_view bytes);
    bool tellLeftOut(std::size_t next);
    void copyIn(std::size_t at, const void* bytes, std::size_t size);
    void copyOut(std::size_t at, void* bytes, std::size_t size) const;
    Header headerAt(std::size_t at) const;
    bool isEmpty() const { return head_ == tail_; }
    bool nextBatch(Batch& batch);
    void advance(std::size_t written);
    bool claim(Owner owner);

    std::mutex guard_;
    std::unique_ptr<char[]> bytes_;      ///< touched only as far as it was used
    std::atomic<std::size_t> head_{0};   ///< of the first entry that is not written
    std::atomic<std::size_t> tail_{0};   ///< behind the last one; from 0 again when all is written
    std::atomic<std::size_t> begun_{0};  ///< bytes of the first entry that are written
    std::size_t leftOut_ = 0;            ///< bytes since the last entry
    int leftOutFd_ = -1;
    bool sleeps_ = false;  ///< the writer waits
    sem_t wake_{};
    std::atomic<Owner> owner_{Owner::kNobody};
    Batch batch_;  ///< the owner's
};

/// The process's own.
LogQueue& logQueue();

/// While it lives, lines of the calling thread wake nobody until it calls letLogLeave or 32 KiB
/// wait: between a record and its datagram nothing is woken.
class DeferredLog {
 public:
    DeferredLog();
    ~DeferredLog();
    DeferredLog(const DeferredLog&) = delete;
    DeferredLog& operator=(const DeferredLog&) = delete;
};
void letLogLeave();
