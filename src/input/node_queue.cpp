#include "input/node_queue.h"

#include <linux/input-event-codes.h>

#include <algorithm>
#include <utility>

namespace {

/// A node that gives more than these reads behind a marker talks without end.
constexpr int kMostReads = 64;

bool isMarker(const InputRecord& record) {
    return record.type == EV_SYN && record.code == SYN_DROPPED;
}

}  // namespace

NodeQueue::~NodeQueue() {
    if (slots_ != nullptr) {
        std::allocator<Entry>().deallocate(slots_, kCapacity);
    }
}

void NodeQueue::append(const Entry& entry) {
    if (slots_ == nullptr) {
        slots_ = std::allocator<Entry>().allocate(kCapacity);
    }
    std::construct_at(slots_ + (first_ + size_) % kCapacity, entry);
    ++size_;
}

bool NodeQueue::push(const InputRecord& record, const TimeOfDay& read) {
    if (!takesMore()) {
        return false;
    }
    append({record, read});
    return true;
}

void NodeQueue::fill(const EventNode& node, std::span<InputRecord> scratch) {
    const NodeRead got =
        readRecords(node, scratch.first(std::min(scratch.size(), kCapacity - size_)));
    const TimeOfDay now = timeOfDay();
    failure_ = got.failure;
    for (const InputRecord& record : scratch.first(got.count)) {
        append({record, now, isMarker(record)});
        if (isMarker(record)) {
            dropTheRest(node, scratch);
            return;
        }
    }
}

/// What stands behind the marker belongs to a state that nobody knows; the true one is asked for
/// once the node is empty.
void NodeQueue::dropTheRest(const EventNode& node, std::span<InputRecord> scratch) {
    for (int reads = 0; reads < kMostReads && !failure_ && hasInput(node.fd); ++reads) {
        failure_ = readRecords(node, scratch).failure;
    }
    losses_.push_back(readKeysDown(node.fd));
}

NodeQueue::Next NodeQueue::next() {
    if (size_ == 0) {
        failureLength_ = failure_.value_or(0);
        return std::exchange(failure_, std::nullopt) ? Next::kFailure : Next::kNothing;
    }
    entry_ = slots_[first_];
    --size_;
    first_ = size_ == 0 ? 0 : (first_ + 1) % kCapacity;
    if (!entry_.isLoss) {
        return Next::kRecord;
    }
    downNow_ = losses_.front();
    losses_.erase(losses_.begin());
    return Next::kLoss;
}

std::size_t NodeQueue::clear() {
    const std::size_t dropped = size_;
    first_ = size_ = 0;
    failure_.reset();
    losses_.clear();
    return dropped;
}
