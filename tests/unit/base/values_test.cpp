#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <thread>

#include "app/base/address_text.h"
#include "app/base/guarded.h"
#include "app/base/shared.h"

namespace {

using namespace std::string_view_literals;

TEST(AddressText, HoldsNineteenCharactersUpToTheFirstNul) {
    AddressText text;
    EXPECT_TRUE(text.assign("1234567890123456789"));
    EXPECT_EQ(text.view(), "1234567890123456789");
    EXPECT_FALSE(text.assign("12345678901234567890"));
    EXPECT_EQ(text.view(), "1234567890123456789");
    EXPECT_TRUE(text.assign("10.0.0.1\0more that does not count"sv));
    EXPECT_EQ(text.view(), "10.0.0.1");
    EXPECT_EQ(text, AddressText("10.0.0.1")) << "bytes of the longer text were left behind";
}

TEST(AddressText, EmptyAndAllZeroMeanNobody) {
    EXPECT_TRUE(AddressText().isNone());
    EXPECT_TRUE(AddressText("0.0.0.0").isNone());
    EXPECT_FALSE(AddressText("0.0.0.0-1").isNone());
    EXPECT_FALSE(AddressText("10.0.0.0").isNone());
}

TEST(Shared, AddWrapsAndExchangeGivesTheOldValue) {
    Shared<int> word{INT_MAX};
    word.add(1);
    EXPECT_EQ(word, INT_MIN);
    EXPECT_EQ(word.exchange(5), INT_MIN);
    EXPECT_EQ(word, 5);
}

TEST(Guarded, CopiesAreNeverTorn) {
    Guarded<std::string> text{std::string(100, 'a')};
    Shared<bool> done{false};
    std::thread writer([&] {
        for (int i = 0; i < 2000; ++i) {
            text.set(std::string(100, i % 2 == 0 ? 'b' : 'a'));
            text.with([](std::string& held) { held.assign(held.size(), 'c'); });
        }
        done = true;
    });
    while (!done) {
        const std::string copy = text.copy();
        EXPECT_EQ(copy, std::string(100, copy[0]));
    }
    writer.join();
}

}  // namespace
