#include "net/network_info.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace {

struct Answer {
    int result;
    std::string text;

    friend bool operator==(const Answer&, const Answer&) = default;
    friend void PrintTo(const Answer& a, std::ostream* out) { *out << a.result << ' ' << a.text; }
};

Answer ask(const char* name, unsigned selector) {
    std::array<char, NetworkInfo::kEverythingSize> text{"unchanged"};
    const int result = NetworkInfo::GetNetworkInfo(
        name, static_cast<NetworkInfo::IF_CONFIG>(selector), text.data());
    return {result, text.data()};
}

TEST(NetworkInfo, TellsAboutTheLoopbackInterface) {
    EXPECT_EQ(ask("lo", 0x8915), (Answer{1, "127.0.0.1"}));
    EXPECT_EQ(ask("lo", 0x8919), (Answer{1, "0.0.0.0"}));
    EXPECT_EQ(ask("lo", 0x891B), (Answer{1, "255.0.0.0"}));
    EXPECT_EQ(ask("lo", 0x8927), (Answer{1, "00:00:00:00:00:00"}));
    EXPECT_EQ(ask("lo", 0x891C),
              (Answer{1, "mac:00:00:00:00:00:00@ip:127.0.0.1@mask:255.0.0.0@braod:0.0.0.0"}));
}

TEST(NetworkInfo, AnInterfaceThatIsNotListedHasEmptyTexts) {
    for (const char* name : {"nosuch0", "", "l", "lo0", "a name longer than any interface has"}) {
        EXPECT_EQ(ask(name, 0x8915), (Answer{1, ""})) << "interface '" << name << "'";
    }
    EXPECT_EQ(ask("nosuch0", 0x891C), (Answer{1, "mac:@ip:@mask:@braod:"}));
}

TEST(NetworkInfo, AnotherSelectorOrANullArgumentFails) {
    for (const unsigned selector : {0U, 0x8914U, 0x891DU, 0xFFFFFFFFU}) {
        EXPECT_EQ(ask("lo", selector), (Answer{0, "unchanged"})) << "selector " << selector;
    }
    EXPECT_EQ(ask(nullptr, 0x8915), (Answer{0, "unchanged"}));
    EXPECT_EQ(NetworkInfo::GetNetworkInfo("lo", NetworkInfo::kAddress, nullptr), 0);
}

}  // namespace
