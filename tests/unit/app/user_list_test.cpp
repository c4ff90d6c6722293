#include "app/user_list.h"

#include <stdexcept>

#include "base/state.h"
#include "unit/fixture.h"

namespace {

std::string texts(const std::vector<AddressText>& addresses) {
    std::string all;
    for (const AddressText& address : addresses) {
        all += std::string(address.view()) + " ";
    }
    return all;
}

TEST(UserList, TakesTheLinesInsideTheGroups) {
    const std::pair<const char*, const char*> rows[] = {
        {"", ""},
        {"IP{\r\na\r\nb\r\n}\r\nIP{\r\nc\r\n}\r\n", "a b c "},
        {"IP{\r\n}\r\n", ""},
        {"x\r\n\r\nIP{\r\na\r\n}} rest\r\nb\r\n IP{\r\nc", "a "},
        {"IP{\r\na\r\nb", "a b "},
        {"IP{\r\na\r\n}\r\nIP{", "a "},
        {"IP{\r\nIP{\r\na\r\n}\r\nb", "IP{ a "},
        {"IP{\na\n}\n", ""}};
    for (const auto& [text, addresses] : rows) {
        EXPECT_EQ(texts(parseUserList(text).addresses), addresses) << text;
    }
    EXPECT_THROW(parseUserList("IP{\r\n\r\na\r\n}\r\n"), std::out_of_range);
    EXPECT_THROW(parseUserList("IP{\r\na\r\n\r\n}\r\n"), std::out_of_range);
}

TEST(UserList, IsFilledFromAFileOfUpTo2048Bytes) {
    const Scratch scratch;
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(scratch.path());
    user_ip.assign(5, AddressText("10.9.9.9"));
    user_n = 5;
    EXPECT_EQ(printedBy(loadUserList), "");
    EXPECT_EQ(user_n, 5) << "a missing file changes nothing";

    const std::string group = "IP{\r\n10.0.0.5\r\n10.0.0.6\r\n}\r\n";
    const std::string full = std::string(2048 - 2 - group.size(), 'x') + "\r\n" + group;
    scratch.put("ip.txt", full);
    EXPECT_EQ(printedBy(loadUserList), "");
    EXPECT_EQ(texts(user_ip), "10.0.0.5 10.0.0.6 ");
    EXPECT_EQ(user_n, 2);
    scratch.put("ip.txt", full + "\n");
    EXPECT_EQ(printedBy(loadUserList), "ip.txt error\n");
    EXPECT_EQ(user_n, 0);

    std::string text = "IP{\r\n1234567890123456789\r\n12345678901234567890\r\n";
    const std::size_t most = (2048 - text.size()) / 3;
    for (std::size_t address = 0; address < most; ++address) {
        text += std::to_string(address % 10) + "\r\n";
    }
    scratch.put("ip.txt", text);
    EXPECT_EQ(printedBy(loadUserList),
              "ip.txt: address of 20 characters left out: 12345678901234567890\n");
    EXPECT_EQ(user_n, static_cast<std::int32_t>(1 + most));
    ASSERT_EQ(user_ip.size(), 1 + most);
    EXPECT_EQ(user_ip[0].view(), "1234567890123456789");
    EXPECT_EQ(user_ip[most].view(), std::to_string((most - 1) % 10));

    std::filesystem::remove(scratch.path("ip.txt"));
    std::filesystem::create_directory(scratch.path("ip.txt"));
    EXPECT_EQ(printedBy(loadUserList), "fopen ip.txt error\n");
    EXPECT_EQ(user_n, 0);
    std::filesystem::current_path(before);
}

}  // namespace
