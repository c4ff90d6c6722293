#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "base/clock.h"
#include "base/event_node.h"

/// What a node gave and nobody has served yet. The kernel keeps 64 records for a reader; whatever
/// the listener waits for, its nodes are emptied into these queues meanwhile.
///
///   record record record            served in order
///   record record failure           the failure comes last; nothing is read behind it until then
///   record LOST record … end        the marker for dropped events: the rest of what the node has
///      └─ record loss               is dropped with it, and the true state stands in its place
class NodeQueue {
 public:
    static constexpr std::size_t kCapacity = 8192;

    struct Entry {
        InputRecord record;
        TimeOfDay read;       ///< when it was read from the node
        bool isLoss = false;  ///< events were lost here
    };
    enum class Next : std::uint8_t { kNothing, kRecord, kLoss, kFailure };

    NodeQueue() = default;
    ~NodeQueue();
    NodeQueue(const NodeQueue&) = delete;
    NodeQueue& operator=(const NodeQueue&) = delete;

    /// Takes what the node has with one read through `scratch` (what it holds at most); more only
    /// behind the marker for dropped events.
    void fill(const EventNode& node, std::span<InputRecord> scratch);
    /// Appends one record; false when there is no room.
    bool push(const InputRecord& record, const TimeOfDay& read);

    bool isEmpty() const { return size_ == 0 && !failure_; }
    /// False for a node that is full or has failed: it is read again once it is served.
    bool takesMore() const { return size_ < kCapacity && !failure_; }

    /// Takes out what comes next; a record is in entry() then.
    Next next();
    const Entry& entry() const { return entry_; }
    /// The keys that are down at the loss just taken; nothing when the node could not tell.
    const std::optional<KeysDown>& downNow() const { return downNow_; }
    /// What the failed read gave: 0 to 15 bytes, or -1.
    int failureLength() const { return failureLength_; }

    /// Drops everything; returns how many records that were.
    std::size_t clear();

 private:
    void append(const Entry& entry);
    void dropTheRest(const EventNode& node, std::span<InputRecord> scratch);

    Entry* slots_ = nullptr;  ///< memory that is touched only as far as it was used
    std::size_t first_ = 0;
    std::size_t size_ = 0;
    std::optional<int> failure_;
    std::vector<std::optional<KeysDown>> losses_;  ///< one for each loss in the queue

    Entry entry_;
    std::optional<KeysDown> downNow_;
    int failureLength_ = 0;
};
