#include "app/base/event_node.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/input.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <string>

#include "app/base/path_prefix.h"

namespace {

/// A FIFO under a prefixed root, as a virtual board has it.
class EventNodeOnFifo : public testing::Test {
 protected:
    EventNodeOnFifo()
        : root_(std::filesystem::path(testing::TempDir()) /
                ("event_node_" + std::to_string(getpid()))) {
        std::filesystem::create_directories(root_);
        EXPECT_EQ(mkfifo((root_ / "event3").c_str(), 0600), 0);
        setPathPrefix(root_);
        node_ = openEventNode("/event3");
    }
    ~EventNodeOnFifo() override {
        close(node_.fd);
        setPathPrefix("");
        std::filesystem::remove_all(root_);
    }

    std::filesystem::path root_;
    EventNode node_;
};

TEST_F(EventNodeOnFifo, OpensReadWriteCloseOnExecAndBlocking) {
    ASSERT_GE(node_.fd, 0);
    EXPECT_EQ(node_.layout, RecordLayout::kPlain16);
    EXPECT_EQ(fcntl(node_.fd, F_GETFL) & (O_ACCMODE | O_NONBLOCK), O_RDWR);
    EXPECT_NE(fcntl(node_.fd, F_GETFD) & FD_CLOEXEC, 0);
    EXPECT_EQ(openEventNode("/event4").fd, -1);
}

TEST_F(EventNodeOnFifo, EchoesARecordOfSixteenBytes) {
    ASSERT_TRUE(writeRecord(node_, EV_LED, LED_CAPSL, -2));
    std::array<unsigned char, 32> bytes{};
    EXPECT_EQ(read(node_.fd, bytes.data(), bytes.size()), 16);
    const std::array<unsigned char, 16> expected{0,      0, 0,         0, 0,    0,    0,    0,
                                                 EV_LED, 0, LED_CAPSL, 0, 0xFE, 0xFF, 0xFF, 0xFF};
    EXPECT_EQ(std::memcmp(bytes.data(), expected.data(), expected.size()), 0);

    const std::array<unsigned char, 16> sent{1,      2, 0,    0, 3, 0, 0, 0,
                                             EV_KEY, 0, 0x1E, 0, 1, 0, 0, 0};
    ASSERT_EQ(write(node_.fd, sent.data(), sent.size()), 16);
    InputRecord record;
    EXPECT_EQ(readRecord(node_, record), kRecordSize);
    EXPECT_EQ(record.seconds, 0x201);
    EXPECT_EQ(record.microseconds, 3);
    EXPECT_EQ(record.type, EV_KEY);
    EXPECT_EQ(record.code, KEY_A);
    EXPECT_EQ(record.value, 1);
}

TEST_F(EventNodeOnFifo, ShortRecordIsToldAndLeavesTheLastOne) {
    InputRecord record{.value = 77};
    ASSERT_EQ(write(node_.fd, "seven b", 7), 7);
    EXPECT_EQ(readRecord(node_, record), 7);
    EXPECT_EQ(readRecord(EventNode{}, record), -1);
    EXPECT_EQ(record.value, 77);
    EXPECT_FALSE(writeRecord(EventNode{}, EV_SYN, 0, 0));
}

TEST_F(EventNodeOnFifo, NativeRecordIsWholeOnlyWithAllItsBytes) {
    const EventNode native{node_.fd, RecordLayout::kNative};
    InputRecord record;
    ASSERT_TRUE(writeRecord(native, EV_REL, REL_X, -5));
    EXPECT_EQ(readRecord(native, record), kRecordSize);
    EXPECT_EQ(record.type, EV_REL);
    EXPECT_EQ(record.code, REL_X);
    EXPECT_EQ(record.value, -5);

    const std::string cut(sizeof(input_event) - 1, '\1');
    ASSERT_EQ(write(node_.fd, cut.data(), cut.size()), static_cast<ssize_t>(cut.size()));
    EXPECT_EQ(readRecord(native, record), kRecordSize - 1);
    EXPECT_EQ(record.value, -5);
}

TEST_F(EventNodeOnFifo, WhatANodeCannotTellIsLightsOffAndNoRange) {
    EXPECT_EQ(readLedBits(node_.fd), 0U);
    EXPECT_FALSE(readAxisRange(node_.fd, ABS_X).has_value());
    EXPECT_FALSE(readAxisRange(-1, ABS_X).has_value());
}

}  // namespace
