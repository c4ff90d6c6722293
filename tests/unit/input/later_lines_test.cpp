#include "input/later_lines.h"

#include "unit/fixture.h"

namespace {

[[gnu::format(printf, 2, 3)]] void add(LaterLines& lines, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    lines.add(format, arguments);
    va_end(arguments);
}

TEST(LaterLines, SayWhatWasSaidThenInItsOrder) {
    LaterLines lines;
    std::string name = "event0";
    EXPECT_EQ(printedBy([&] {
                  add(lines, "type:%d code:%d value:%d\n", 1, -2, 3);
                  add(lines, "diff: %03ds. %03ldms. %03ldus\n", -1, 7L, 12345L);
                  add(lines, "%s 0x%x %u%% %zu %c|%5d|%-5d|%s", name.c_str(), 0xABCU, 4294967295U,
                      std::size_t{9}, 'x', 42, 42, "");
                  name = "changed";
              }),
              "");
    EXPECT_EQ(printedBy([&] { lines.print(); }),
              "type:1 code:-2 value:3\ndiff: -01s. 007ms. 12345us\n"
              "event0 0xabc 4294967295% 9 x|   42|42   |");
    EXPECT_EQ(printedBy([&] { lines.print(); }), "");
}

TEST(LaterLines, AreNeverTooMany) {
    LaterLines lines;
    const std::string longName(300, 'n');
    std::string expected;
    EXPECT_EQ(printedBy([&] {
                  for (int i = 0; i < 100; ++i) {
                      add(lines, "%s %d\n", longName.c_str(), i);
                      expected += longName.substr(0, 255) + " " + std::to_string(i) + "\n";
                  }
                  lines.print();
              }),
              expected);
}

}  // namespace
