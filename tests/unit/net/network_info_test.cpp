#include "net/network_info.h"

#include "unit/fixture.h"

namespace {

std::string ask(const char* name, unsigned selector) {
    char text[NetworkInfo::kEverythingSize] = "unchanged";
    const auto what = static_cast<NetworkInfo::IF_CONFIG>(selector);
    const int result = NetworkInfo::GetNetworkInfo(name, what, text);
    return std::to_string(result) + " " + text;
}

TEST(NetworkInfo, TellsAboutAnInterface) {
    EXPECT_EQ(ask("lo", 0x8915), "1 127.0.0.1");
    EXPECT_EQ(ask("lo", 0x8919), "1 0.0.0.0");
    EXPECT_EQ(ask("lo", 0x891B), "1 255.0.0.0");
    EXPECT_EQ(ask("lo", 0x8927), "1 00:00:00:00:00:00");
    EXPECT_EQ(ask("lo", 0x891C),
              "1 mac:00:00:00:00:00:00@ip:127.0.0.1@mask:255.0.0.0@braod:0.0.0.0");
    for (const char* name : {"nosuch0", "", "l", "lo0", "a name longer than any interface has"}) {
        EXPECT_EQ(ask(name, 0x891C), "1 mac:@ip:@mask:@braod:") << "interface '" << name << "'";
    }
    EXPECT_EQ(ask("lo", 0x8914), "0 unchanged");
    EXPECT_EQ(ask(nullptr, 0x8915), "0 unchanged");
    EXPECT_EQ(NetworkInfo::GetNetworkInfo("lo", NetworkInfo::kAddress, nullptr), 0);
}

}  // namespace
