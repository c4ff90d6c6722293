#include "input/node_queue.h"

#include <fcntl.h>
#include <linux/input-event-codes.h>

#include "unit/fixture.h"

namespace {

/// A node that never ends.
struct Queue : testing::Test {
    Queue() {
        EXPECT_EQ(pipe2(ways, O_NONBLOCK), 0);
        EXPECT_GE(fcntl(ways[1], F_SETPIPE_SZ, 1 << 20), 1 << 18);
        node.fd = ways[0];
    }
    ~Queue() override { close(ways[0]), close(ways[1]); }

    void give(int from, int count, std::uint16_t type = EV_REL) const {
        for (int value = from; value < from + count; ++value) {
            const InputRecord record{0, 0, type, SYN_DROPPED, value};
            EXPECT_EQ(write(ways[1], &record, sizeof record), 16);
        }
    }
    void fill() { queue.fill(node, scratch); }
    /// What is served next: a record's value, "loss", "failure" or nothing.
    std::string next() {
        switch (queue.next()) {
            case NodeQueue::Next::kRecord:
                return std::to_string(queue.entry().record.value);
            case NodeQueue::Next::kLoss:
                return "loss";
            case NodeQueue::Next::kFailure:
                return "failure " + std::to_string(queue.failureLength());
            default:
                return "";
        }
    }

    int ways[2] = {-1, -1};
    EventNode node;
    NodeQueue queue;
    std::array<InputRecord, 256> scratch;
};

TEST_F(Queue, HoldsWhatAReaderOfEightThousandRecordsNeedsAndTakesMoreOnceServed) {
    constexpr int kMost = NodeQueue::kCapacity;
    give(0, kMost + 300);
    while (queue.takesMore()) {
        fill();
    }
    EXPECT_FALSE(queue.push({}, {}));
    for (int value = 0; value < kMost + 300; ++value) {
        ASSERT_EQ(next(), std::to_string(value));
        if (value >= 150 && queue.takesMore()) {  // round the end of the memory
            fill();
        }
    }
    EXPECT_EQ(next(), "");
    EXPECT_TRUE(queue.isEmpty());
}

TEST_F(Queue, AMarkerTakesTheRestOfTheNodeWithIt) {
    give(1, 2);
    give(0, 1, EV_SYN);
    give(3, 300);  // more than one read
    fill();
    give(9, 1);
    fill();
    for (const char* expected : {"1", "2", "loss", "9", ""}) {
        EXPECT_EQ(next(), expected);
    }
    EXPECT_FALSE(queue.downNow()) << "a pipe cannot tell";
}

TEST_F(Queue, AFailureComesLastAndOnceAndTheNodeIsReadAgain) {
    give(1, 1);
    EXPECT_EQ(write(ways[1], "short", 5), 5);
    fill();
    EXPECT_FALSE(queue.takesMore());
    EXPECT_EQ(next(), "1");
    EXPECT_EQ(next(), "failure 5");
    EXPECT_TRUE(queue.takesMore());
    give(2, 3);
    fill();
    EXPECT_EQ(queue.clear(), 3U);
    EXPECT_EQ(next(), "");
}

}  // namespace
