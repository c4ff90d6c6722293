#include "remote/arrival.h"

#include <gtest/gtest.h>

#include <optional>
#include <ostream>
#include <vector>

void PrintTo(const Place& place, std::ostream* out) {
    *out << "cell " << place.cellX << "," << place.cellY << " pointer " << place.x << ","
         << place.y;
}

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;

struct Row {
    const char* what;
    ScreenShape from;
    ScreenShape to;
    Place at;
    std::optional<Place> plain;
    Place scaled;
};

// Every screen of the rows stands at (1,1) of the wall or beside it.
constexpr ScreenShape single(unsigned x, unsigned y) { return {true, 1, 1, x, y}; }
constexpr ScreenShape split(unsigned columns, unsigned rows, unsigned x, unsigned y) {
    return {false, columns, rows, x, y};
}

TEST(Arrival, PointerAndCellFollowBothRules) {
    const std::vector<Row> rows{
        {"single left", single(1, 1), single(0, 1), {0, 0, -4, 70}, Place{0, 0, 1920, 70},
         {0, 0, 1920, 70}},
        {"single up", single(1, 1), single(1, 0), {0, 0, 30, -1}, Place{0, 0, 30, 1080},
         {0, 0, 30, 1080}},
        {"split left", split(3, 2, 1, 1), split(2, 4, 0, 1), {0, 1, -1, 9}, Place{1, 1, 1920, 9},
         {1, 1, 1920, 9}},
        {"split right", split(3, 2, 1, 1), split(2, 4, 2, 1), {2, 1, 1921, 9}, Place{0, 1, 0, 9},
         {0, 1, 0, 9}},
        {"split up", split(3, 2, 1, 1), split(2, 4, 1, 0), {2, 0, 9, -1}, Place{2, 3, 9, 1080},
         {2, 3, 9, 1080}},
        {"split down", split(3, 2, 1, 1), split(2, 4, 1, 2), {2, 1, 9, 1080}, Place{2, 0, 9, 0},
         {2, 0, 9, 0}},
        // Single to split: a cell measures 1023 / 3 = 341 units on both axes.
        {"single to split right", single(1, 1), split(3, 2, 2, 1), {0, 0, 1921, 700},
         Place{0, 0, 0, 700}, {0, 2, 0, 36}},
        {"single to split left", single(1, 1), split(3, 2, 0, 1), {0, 0, -1, 340},
         Place{2, 0, 1920, 340}, {2, 0, 1920, 680}},
        {"single to split down", single(1, 1), split(3, 2, 1, 2), {0, 0, 350, 1080},
         Place{0, 0, 350, 0}, {1, 0, 27, 0}},
        {"single to split up", single(1, 1), split(3, 2, 1, 0), {0, 0, 341, -1},
         Place{0, 1, 341, 1080}, {1, 1, 0, 1080}},
        // Split to single: 1023 / 2 = 511 units a cell, the pointer divided by columns or rows.
        {"split to single left", split(2, 3, 1, 1), single(0, 1), {0, 2, -1, 100},
         Place{0, 0, 1920, 100}, {0, 0, 1920, 1055}},
        {"split to single right", split(2, 3, 1, 1), single(2, 1), {1, 1, 1921, 100},
         Place{0, 0, 0, 100}, {0, 0, 0, 544}},
        {"split to single up", split(2, 3, 1, 1), single(1, 0), {1, 0, 101, -1},
         Place{0, 0, 101, 1080}, {0, 0, 561, 1080}},
        {"split to single down", split(2, 3, 1, 1), single(1, 2), {0, 2, 101, 1080},
         Place{0, 0, 101, 0}, {0, 0, 50, 0}},
        {"farther in the row", single(0, 1), split(2, 2, 9, 1), {0, 0, 1921, 600},
         Place{0, 0, 0, 600}, {0, 1, 0, 178}},
        {"diagonal", split(2, 2, 1, 1), split(2, 2, 2, 2), {1, 1, 5, 6}, std::nullopt,
         {0, 0, 5, 6}},
        {"itself", split(2, 2, 1, 1), split(2, 2, 1, 1), {1, 1, 5, 6}, std::nullopt,
         {0, 0, 5, 6}},
        {"screen without cells", single(1, 1), split(0, 0, 0, 1), {0, 0, -1, 5},
         Place{0, 0, 1920, 5}, {0, 0, 1920, 0}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(arriveAtEdge(row.from, row.to, row.at, kWidth, kHeight), row.plain);
        EXPECT_EQ(arriveScaled(row.from, row.to, row.at, kWidth, kHeight), row.scaled);
    }
}

TEST(Arrival, PointerFarOffScreenStaysWithin32Bits) {
    const Place at{128, 0, 2147483647, -1};
    EXPECT_EQ(arriveScaled(split(1, 2, 1, 1), single(1, 0), at, kWidth, kHeight),
              (Place{0, 0, 2147483647, 1080}));
}

}  // namespace
