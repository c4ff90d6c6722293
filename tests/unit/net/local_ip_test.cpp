#include "net/local_ip.h"

#include "unit/fixture.h"

namespace {

using namespace std::string_literals;

TEST(LocalIp, IsWhatFollowsTheKeyAndOneSeparator) {
    const std::string piece(2047, 'x');
    const std::pair<std::string, std::string> rows[] = {
        {"kEth0Ip=192.168.1.20\n", "192.168.1.20"},
        {"kEth0Ip=192.168.1.20\r\n", "192.168.1.20\r"},
        {"kEth0Mask=255.0.0.0\n  [kEth0Ip]10.0.0.1 \nkEth0Ip=10.0.0.2\n", "10.0.0.1 "},
        {"kEth0IpkEth0Ip=1.2.3.4\n", "Eth0Ip=1.2.3.4"},
        {"", "kEth0Ip"},
        {"keth0ip=1.2.3.4\nkEth0I\np=1\n", "kEth0Ip"},
        {"kEth0Ip\n10.0.0.1\n", ""},
        {"kEth0Ip", ""},
        {"a\0b\nkEth0Ip=1.2.3.4\0rest\n"s, "1.2.3.4"},
        {"a\0kEth0Ip=1.2.3.4\nkEth0Ip=5.6.7.8\n"s, "5.6.7.8"},
        {piece + "kEth0Ip=1.2.3.4\n", "1.2.3.4"},
        {piece.substr(2) + "kEth0Ip=1.2.3.4\nkEth0Ip=5.6.7.8", "5.6.7.8"},
        {piece.substr(10) + "kEth0Ip=1.2.3.4\n", "1."},
        {piece.substr(7) + "kEth0Ip=1.2.3.4\n", ""}};
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(localIpFromText(text), expected) << "from: " << text;
    }
}

TEST(LocalIp, IsReadFromUpToOneMebibyteOfAFile) {
    const Root root;
    EXPECT_EQ(GetLocalIp(), "kEth0Ip");
    root.put("data/net.ini", "kEth0Ip=192.168.1.20\n");
    EXPECT_EQ(GetLocalIp(), "192.168.1.20");
    root.put("data/net.ini", std::string((1 << 20) - 16, '\n') + "kEth0Ip=192.168.1.20\n");
    EXPECT_EQ(GetLocalIp(), "192.168.");
    std::filesystem::remove(root.path("data/net.ini"));
    ASSERT_EQ(mkfifo(root.path("data/net.ini").c_str(), 0600), 0);
    EXPECT_EQ(GetLocalIp(), "kEth0Ip");
}

}  // namespace
