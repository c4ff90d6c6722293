#include "net/local_ip.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "app/base/path_prefix.h"

namespace {

using namespace std::string_literals;

TEST(LocalIp, IsWhatFollowsTheKeyAndOneSeparator) {
    const std::string piece(2047, 'x');
    const struct {
        std::string text;
        std::string expected;
    } rows[] = {
        {"kEth0Ip=192.168.1.20\n", "192.168.1.20"},
        {"kEth0Ip=192.168.1.20", "192.168.1.20"},
        {"kEth0Ip=192.168.1.20\r\n", "192.168.1.20\r"},
        {"kEth0Mask=255.0.0.0\n  [kEth0Ip]10.0.0.1 \nkEth0Ip=10.0.0.2\n", "10.0.0.1 "},
        {"\n\n#kEth0Ip:10.0.0.3\n", "10.0.0.3"},
        {"kEth0IpkEth0Ip=1.2.3.4\n", "Eth0Ip=1.2.3.4"},
        {"", "kEth0Ip"},
        {"keth0ip=1.2.3.4\nkEth0I\np=1\n", "kEth0Ip"},
        {"kEth0Ip=\n", ""},
        {"kEth0Ip\n10.0.0.1\n", ""},
        {"kEth0Ip", ""},
        {"a\0b\nkEth0Ip=1.2.3.4\0rest\n"s, "1.2.3.4"},
        {"a\0kEth0Ip=1.2.3.4\nkEth0Ip=5.6.7.8\n"s, "5.6.7.8"},
        {piece + "kEth0Ip=1.2.3.4\n", "1.2.3.4"},
        {piece.substr(2) + "kEth0Ip=1.2.3.4\nkEth0Ip=5.6.7.8", "5.6.7.8"},
        {piece.substr(10) + "kEth0Ip=1.2.3.4\n", "1."},
        {piece.substr(7) + "kEth0Ip=1.2.3.4\n", ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(localIpFromText(row.text), row.expected) << "from: " << row.text;
    }
}

class LocalIpFile : public testing::Test {
 protected:
    LocalIpFile()
        : root_(std::filesystem::path(testing::TempDir()) /
                ("local_ip_" + std::to_string(getpid()))),
          file_(root_ / "data/net.ini") {
        std::filesystem::create_directories(root_ / "data");
        setPathPrefix(root_);
    }
    ~LocalIpFile() override {
        setPathPrefix("");
        std::filesystem::remove_all(root_);
    }

    std::filesystem::path root_;
    std::filesystem::path file_;
};

TEST_F(LocalIpFile, IsReadUpToOneMebibyte) {
    std::ofstream(file_) << "kEth0Ip=192.168.1.20\n";
    EXPECT_EQ(GetLocalIp(), "192.168.1.20");
    std::ofstream(file_) << std::string((1 << 20) - 16, '\n') << "kEth0Ip=192.168.1.20\n";
    EXPECT_EQ(GetLocalIp(), "192.168.");
}

TEST_F(LocalIpFile, CountsAsEmptyWhenItCannotBeRead) {
    EXPECT_EQ(GetLocalIp(), "kEth0Ip");
    std::filesystem::create_directory(file_);
    EXPECT_EQ(GetLocalIp(), "kEth0Ip");
    std::filesystem::remove(file_);
    ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
    EXPECT_EQ(GetLocalIp(), "kEth0Ip");
}

}  // namespace
