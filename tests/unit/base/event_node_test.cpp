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

    void expectRead(int result, int type, int code, int value, const EventNode& from) {
        EXPECT_EQ(readRecord(from, record), result);
        EXPECT_EQ(std::tuple(record.type, record.code, record.value),
                  std::tuple(type, code, value));
    }

    Root root;
    EventNode node;
    InputRecord record;
};

TEST_F(EventNodeOnFifo, OpensReadWriteCloseOnExecAndBlocking) {
    EXPECT_EQ(node.layout, RecordLayout::kPlain16);
    EXPECT_EQ(fcntl(node.fd, F_GETFL) & (O_ACCMODE | O_NONBLOCK), O_RDWR);
    EXPECT_NE(fcntl(node.fd, F_GETFD) & FD_CLOEXEC, 0);
    EXPECT_EQ(openEventNode("/event4").fd, -1);
    EXPECT_EQ(readLedBits(node.fd), 0U);
    EXPECT_FALSE(readAxisMaximum(node.fd, ABS_X).has_value());
}

TEST_F(EventNodeOnFifo, EchoesARecordOfSixteenBytes) {
    ASSERT_TRUE(writeRecord(node, EV_LED, LED_CAPSL, -2));
    char bytes[32];
    ASSERT_EQ(read(node.fd, bytes, sizeof bytes), 16);
    EXPECT_EQ(hex({bytes, 16}), "00 00 00 00 00 00 00 00 11 00 01 00 fe ff ff ff");
    ASSERT_EQ(write(node.fd, "\1\2\0\0\3\0\0\0\1\0\x1E\0\1\0\0\0", 16), 16);
    expectRead(kRecordSize, EV_KEY, KEY_A, 1, node);
    EXPECT_EQ(record.seconds, 0x201);
    EXPECT_EQ(record.microseconds, 3);
    ASSERT_EQ(write(node.fd, "seven b", 7), 7);
    expectRead(7, EV_KEY, KEY_A, 1, node);  // a short one leaves the last
    expectRead(-1, EV_KEY, KEY_A, 1, EventNode{});
    EXPECT_FALSE(writeRecord(EventNode{}, EV_SYN, 0, 0));
}

TEST_F(EventNodeOnFifo, NativeRecordIsWholeOnlyWithAllItsBytes) {
    const EventNode native{node.fd, RecordLayout::kNative};
    ASSERT_TRUE(writeRecord(native, EV_REL, REL_X, -5));
    expectRead(kRecordSize, EV_REL, REL_X, -5, native);
    const std::string cut(sizeof(input_event) - 1, '\1');
    ASSERT_EQ(write(node.fd, cut.data(), cut.size()), static_cast<ssize_t>(cut.size()));
    expectRead(kRecordSize - 1, EV_REL, REL_X, -5, native);
}

}  // namespace
