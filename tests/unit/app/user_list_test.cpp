#include "app/user_list.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <stdexcept>

#include "app/base/state.h"
#include "unit/config/scratch.h"

namespace {

std::vector<std::string> texts(const std::vector<AddressText>& addresses) {
    std::vector<std::string> all;
    for (const AddressText& address : addresses) {
        all.emplace_back(address.view());
    }
    return all;
}

TEST(ParseUserList, TakesTheLinesInsideTheGroups) {
    struct Row {
        const char* what;
        const char* text;
        std::vector<std::string> addresses;
    };
    const Row rows[] = {
        {"empty", "", {}},
        {"one group", "IP{\r\n10.0.0.5\r\n10.0.0.6\r\n}\r\n", {"10.0.0.5", "10.0.0.6"}},
        {"two groups", "IP{\r\na\r\n}\r\nIP{\r\nb\r\n}\r\n", {"a", "b"}},
        {"empty group", "IP{\r\n}\r\n", {}},
        {"text outside", "x\r\n\r\nIP{\r\na\r\n}} rest\r\nb\r\n IP{\r\nc", {"a"}},
        {"open at the end", "IP{\r\na\r\nb", {"a", "b"}},
        {"opened by the last line", "IP{\r\na\r\n}\r\nIP{", {"a"}},
        {"opened twice", "IP{\r\nIP{\r\na\r\n}\r\nb", {"IP{", "a"}},
        {"line feeds alone", "IP{\na\n}\n", {}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(texts(parseUserList(row.text).addresses), row.addresses) << row.what;
    }
}

TEST(ParseUserList, AnEmptyLineInsideAGroupIsARangeError) {
    EXPECT_THROW(parseUserList("IP{\r\n\r\na\r\n}\r\n"), std::out_of_range);
    EXPECT_THROW(parseUserList("IP{\r\na\r\n\r\n}\r\n"), std::out_of_range);
}

class UserListFile : public testing::Test {
 protected:
    UserListFile() : before_(std::filesystem::current_path()) {
        std::filesystem::current_path(scratch_.path());
        user_n = 5;
        user_ip.assign(5, AddressText("10.9.9.9"));
    }
    ~UserListFile() override { std::filesystem::current_path(before_); }

    static std::string load() {
        testing::internal::CaptureStdout();
        loadUserList();
        return testing::internal::GetCapturedStdout();
    }

    const Scratch scratch_;
    const std::filesystem::path before_;
};

TEST_F(UserListFile, FillsTheListFromUpTo2048Bytes) {
    const std::string group = "IP{\r\n10.0.0.5\r\n10.0.0.6\r\n}\r\n";
    const std::string full = std::string(2048 - 2 - group.size(), 'x') + "\r\n" + group;
    ASSERT_EQ(full.size(), 2048U);
    scratch_.put("ip.txt", full);
    EXPECT_EQ(load(), "");
    EXPECT_EQ(user_n, 2);
    EXPECT_THAT(texts(user_ip), testing::ElementsAre("10.0.0.5", "10.0.0.6"));

    scratch_.put("ip.txt", full + "\n");
    EXPECT_EQ(load(), "ip.txt error\n");
    EXPECT_EQ(user_n, 0);
}

TEST_F(UserListFile, TellsWhatItLeftOut) {
    std::string text = "IP{\r\n1234567890123456789\r\n12345678901234567890\r\n";
    for (int address = 0; address < 130; ++address) {
        text += std::to_string(address) + "\r\n";
    }
    scratch_.put("ip.txt", text);
    EXPECT_EQ(load(),
              "ip.txt: address of 20 characters left out: 12345678901234567890\n"
              "ip.txt: 3 addresses left out, the list holds 128\n");
    EXPECT_EQ(user_n, 128);
    ASSERT_EQ(user_ip.size(), 128U);
    EXPECT_EQ(user_ip[0].view(), "1234567890123456789");
    EXPECT_EQ(user_ip[127].view(), "126");
}

TEST_F(UserListFile, MissingFileChangesNothingAndADirectoryIsAnError) {
    EXPECT_EQ(load(), "");
    EXPECT_EQ(user_n, 5);
    std::filesystem::create_directory(scratch_.path("ip.txt"));
    EXPECT_EQ(load(), "fopen ip.txt error\n");
    EXPECT_EQ(user_n, 0);
}

}  // namespace
