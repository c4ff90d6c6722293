#include "base/text.h"

#include <climits>
#include <cstring>
#include <vector>

#include "unit/fixture.h"

namespace {

TEST(SplitString, KeepsEmptyPiecesButTheLast) {
    using Pieces = std::vector<std::string>;
    const std::tuple<std::string, std::string, Pieces> rows[] = {
        {"a\r\n\r\nb\r\n", "\r\n", {"a", "", "b"}},
        {"", "#", {}},
        {"#", "#", {""}},
        {"#a", "#", {"", "a"}},
        {"a\rb\n", "\r\n", {"a\rb\n"}},
        {"aaa", "aa", {"", "a"}},
        {"whole", "", {"whole"}}};
    for (auto [text, delimiter, expected] : rows) {
        Pieces pieces{"before"};
        SplitString(text, pieces, delimiter);
        expected.insert(expected.begin(), "before");
        EXPECT_EQ(pieces, expected) << "split of: " << text;
    }
}

TEST(Controls, AreShownInDigitsAndLettersStay) {
    const std::pair<std::string, std::string> rows[] = {
        {"a\tb\n", "a\tb\n"},
        {"\x1b[2J\r\x7f", "\\x1B[2J\\x0D\\x7F"},
        {std::string("\0", 1), "\\x00"},
        {"\x9b"
         "2J \xc2\x9b"
         "2J",
         "\\x9B2J \xc2\\x9B2J"},
        {"\xc3\x80\xc3\xa9\xe2\x80\x93", "\xc3\x80\xc3\xa9\xe2\x80\x93"}};
    for (const auto& [text, shown] : rows) {
        EXPECT_EQ(withoutControls(text), shown);
        EXPECT_EQ(hasNoControls(text), text == shown);
    }
}

TEST(Str2int, ReadsTheNumberThatATextStartsWith) {
    for (const char* text : {"", "-", "x1", " 5", "+5", "--5", "-x", "-1", "\xB2"}) {
        EXPECT_EQ(str2int(text), -1) << "from '" << text << "'";
    }
    const std::pair<const char*, int> rows[] = {{"-7", -7},
                                                {"007", 7},
                                                {"12abc", 12},
                                                {"0x10", 0},
                                                {"2147483648", INT_MAX},
                                                {"-2147483648", INT_MIN},
                                                {"-99999999999999999999", INT_MIN},
                                                {"99999999999999999999x", INT_MAX}};
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(str2int(text), expected) << "from '" << text << "'";
    }
}

TEST(GetIpFromName, TakesWhatStandsBeforeTheFirstHyphen) {
    // A name with a hyphen leaves the bytes behind the address as they are.
    for (const auto& [name, expected] : {std::pair{"192.168.1.31", "192.168.1.31"},
                                         {"127.0.0.31-8000", "127.0.0.31xx"},
                                         {"a-b-c", "axx"},
                                         {"-8000", "xx"},
                                         {"", ""}}) {
        char out[20] = {};
        std::fill_n(out, std::strlen(expected), 'x');
        EXPECT_EQ(printedBy([&, from = name] { GetIpFromName(from, out); }),
                  std::string("name:") + name + " ip:" + expected + "\n");
        EXPECT_STREQ(out, expected);
    }
}

}  // namespace
