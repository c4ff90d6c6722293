#include "app/base/text.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <string>
#include <vector>

namespace {

TEST(SplitString, KeepsEmptyPiecesButTheLast) {
    using Pieces = std::vector<std::string>;
    const struct {
        std::string text;
        std::string delimiter;
        Pieces expected;
    } rows[] = {
        {"a\r\n\r\nb\r\n", "\r\n", {"a", "", "b"}},
        {"IP{", "\r\n", {"IP{"}},
        {"", "#", {}},
        {"#", "#", {""}},
        {"#a", "#", {"", "a"}},
        {"a\rb\n", "\r\n", {"a\rb\n"}},
        {"aaa", "aa", {"", "a"}},
        {"whole", "", {"whole"}},
    };
    for (const auto& row : rows) {
        Pieces pieces{"before"};
        SplitString(row.text, pieces, row.delimiter);
        Pieces expected{"before"};
        expected.insert(expected.end(), row.expected.begin(), row.expected.end());
        EXPECT_EQ(pieces, expected) << "split of: " << row.text;
    }
}

TEST(Str2int, ReadsTheNumberThatATextStartsWith) {
    const struct {
        std::string text;
        int expected;
    } rows[] = {
        {"", -1},
        {"-", -1},
        {"x1", -1},
        {" 5", -1},
        {"+5", -1},
        {"--5", -1},
        {"-x", -1},
        {"-1", -1},
        {"-7", -7},
        {"007", 7},
        {"12abc", 12},
        {"0x10", 0},
        {"1,000", 1},
        {"2147483647", INT_MAX},
        {"2147483648", INT_MAX},
        {"-2147483648", INT_MIN},
        {"-99999999999999999999", INT_MIN},
        {"99999999999999999999x", INT_MAX},
        {"\xB2", -1},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(str2int(row.text), row.expected) << "from '" << row.text << "'";
    }
}

TEST(GetIpFromName, TakesWhatStandsBeforeTheFirstHyphen) {
    const struct {
        const char* name;
        std::string expected;
    } rows[] = {
        {"192.168.1.31", "192.168.1.31"},
        {"127.0.0.31-8000", "127.0.0.31"},
        {"a-b-c", "a"},
        {"-8000", ""},
        {"", ""},
    };
    for (const auto& row : rows) {
        std::array<char, 20> out{};
        testing::internal::CaptureStdout();
        EXPECT_EQ(GetIpFromName(row.name, out.data()), 1);
        EXPECT_EQ(testing::internal::GetCapturedStdout(),
                  "name:" + std::string(row.name) + " ip:" + row.expected + "\n");
        EXPECT_EQ(out.data(), row.expected);
    }
}

TEST(GetIpFromName, AddsNoNulAfterTheAddressOfANameWithAHyphen) {
    std::array<char, 8> out{'x', 'x', 'x', 'x'};
    GetIpFromName("ab-1", out.data());
    EXPECT_STREQ(out.data(), "abxx");
    GetIpFromName("ab", out.data());
    EXPECT_STREQ(out.data(), "ab");
}

}  // namespace
