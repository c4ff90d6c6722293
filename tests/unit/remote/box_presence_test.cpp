#include "remote/box_presence.h"

#include <gtest/gtest.h>

namespace {

TEST(BoxPresence, TellsEachChangeOnce) {
    const AddressText a{"10.0.0.1"}, b{"10.0.0.2"};
    BoxPresence presence;
    std::string told;
    const auto ask = [&](const AddressText& box, const char* answers) {
        for (const char* one = answers; *one != '\0'; ++one) {
            const std::string line = presence.note(box, *one == 'y');
            told += line.empty() ? "" : line + "\n";
        }
    };
    ask(a, "nnynn");
    ask(b, "n");
    ask(a, "nn");
    EXPECT_EQ(told, "") << "never three in a row";
    ask(a, "nnnnn");
    ask(b, "y");
    ask(a, "nnn");
    EXPECT_EQ(told, "box 10.0.0.1 does not answer\n");
    ask(a, "yynnyn");
    EXPECT_EQ(told, "box 10.0.0.1 does not answer\nbox 10.0.0.1 answers again\n");
}

}  // namespace
