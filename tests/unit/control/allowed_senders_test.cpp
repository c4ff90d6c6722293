#include "control/allowed_senders.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

namespace {

bool allowed(const AllowedSenders& senders, const char* address) {
    return senders.allows({inet_addr(address)});
}

TEST(AllowedSenders, AreEverybodyOrThoseInOneOfTheNetworks) {
    AllowedSenders senders;
    EXPECT_TRUE(allowed(senders, "10.0.0.1"));
    for (const char* text : {"", "x", "10.0.0", "10.0.0.1/", "10.0.0.1/33", "10.0.0.1/-1",
                             "10.0.0.1/8x", "10.0.0.1/8/8"}) {
        EXPECT_FALSE(senders.add(text)) << text;
    }
    EXPECT_TRUE(senders.add("10.0.0.1") && senders.add("192.168.7.9/23"));
    EXPECT_TRUE(allowed(senders, "10.0.0.1"));
    EXPECT_FALSE(allowed(senders, "10.0.0.2"));
    EXPECT_TRUE(allowed(senders, "192.168.6.1") && allowed(senders, "192.168.7.255"));
    EXPECT_FALSE(allowed(senders, "192.168.8.1") || allowed(senders, "192.168.5.255"));
    EXPECT_TRUE(senders.add("0.0.0.0/0"));
    EXPECT_TRUE(allowed(senders, "1.2.3.4"));
}

TEST(AllowedSenders, TellTheirRefusalsOnceAMinute) {
    AllowedSenders senders;
    const AllowedSenders::Clock::time_point start{};
    const std::string line = " datagrams from addresses that may not command, the last from ";
    EXPECT_EQ(senders.refuse("a", start), "control: 1" + line + "a");
    EXPECT_EQ(senders.refuse("b", start + std::chrono::seconds(59)), std::nullopt);
    EXPECT_EQ(senders.refuse("c", start + std::chrono::seconds(60)), "control: 2" + line + "c");
}

}  // namespace
