#include "base/event_node.h"
#include "base/led_bits.h"

#include <fcntl.h>
#include <linux/input.h>

#include "unit/fixture.h"

namespace {

/// A FIFO under a prefixed root, as a virtual board has it.
struct EventNodeOnFifo : testing::Test {
    EventNodeOnFifo() {
        EXPECT_EQ(mkfifo(root.path("event3").c_str(), 0600), 0);
        node = openEventNode("/event3");
    }
    ~EventNodeOnFifo() override { close(node.fd); }

    /// What one read gives, as "type code value" of each record and what failed behind them.
    std::string readAll(const EventNode& from, std::size_t most = 8) {
        std::array<InputRecord, 8> records;
        const NodeRead got = readRecords(from, std::span(records).first(most));
        std::string text;
        for (const InputRecord& one : std::span(records).first(got.count)) {
            text += std::to_string(one.type) + " " + std::to_string(one.code) + " " +
                    std::to_string(one.value) + ", ";
        }
        return text + (got.failure ? "failed " + std::to_string(*got.failure) : "");
    }
    void put(const std::string& bytes) const {
        EXPECT_EQ(write(node.fd, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }

    Root root;
    EventNode node;
};

TEST_F(EventNodeOnFifo, OpensReadWriteCloseOnExecAndNeverWaits) {
    EXPECT_EQ(node.layout, RecordLayout::kPlain16);
    EXPECT_EQ(fcntl(node.fd, F_GETFL) & (O_ACCMODE | O_NONBLOCK), O_RDWR | O_NONBLOCK);
    EXPECT_EQ(readAll(node), "") << "nothing there is no failure";
    EXPECT_NE(fcntl(node.fd, F_GETFD) & FD_CLOEXEC, 0);
    EXPECT_EQ(openEventNode("/event4").fd, -1);
    EXPECT_EQ(readLedBits(node.fd), 0U);
    EXPECT_FALSE(readAxisMaximum(node.fd, ABS_X).has_value() || readKeysDown(node.fd).has_value());
}

TEST_F(EventNodeOnFifo, EchoesARecordOfSixteenBytes) {
    ASSERT_TRUE(writeRecord(node, EV_LED, LED_CAPSL, -2));
    char bytes[32];
    ASSERT_EQ(read(node.fd, bytes, sizeof bytes), 16);
    EXPECT_EQ(hex({bytes, 16}), "00 00 00 00 00 00 00 00 11 00 01 00 fe ff ff ff");
    EXPECT_FALSE(writeRecord(EventNode{}, EV_SYN, 0, 0));
}

TEST_F(EventNodeOnFifo, OneReadTakesWhatTheNodeHas) {
    const std::string record("\1\2\0\0\3\0\0\0\1\0\x1E\0\1\0\0\0", 16);
    put(record + record + record + "seven b");
    EXPECT_EQ(readAll(node, 2), "1 30 1, 1 30 1, ") << "as much as there is room";
    EXPECT_EQ(readAll(node), "1 30 1, failed 7");
    EXPECT_EQ(readAll(EventNode{}), "failed -1");
    InputRecord one;
    put(record);
    readRecords(node, {&one, 1});
    EXPECT_EQ(std::pair(one.seconds, one.microseconds), std::pair(0x201, 3));
}

TEST_F(EventNodeOnFifo, ANativeRecordIsWholeOnlyWithAllItsBytes) {
    const EventNode native{node.fd, RecordLayout::kNative};
    ASSERT_TRUE(writeRecord(native, EV_REL, REL_X, -5));
    ASSERT_TRUE(writeRecord(native, EV_SYN, SYN_REPORT, 0));
    EXPECT_EQ(readAll(native), "2 0 -5, 0 0 0, ");
    put(std::string(sizeof(input_event) - 1, '\1'));
    EXPECT_EQ(readAll(native), "failed 15");
}

}  // namespace
