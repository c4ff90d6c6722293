#include "remote/arrival.h"

#include <gtest/gtest.h>

#include <ostream>

void PrintTo(const Place& place, std::ostream* out) {
    *out << "cell " << place.cell.x << "," << place.cell.y << " at " << place.pointer.x << ","
         << place.pointer.y;
}

namespace {

constexpr Place kNone{{99, 99}, {99, 99}};  // the plain rule gives nothing

struct Row {
    ScreenShape from, to;
    Place at, plain, scaled;
};

constexpr ScreenShape one(unsigned x, unsigned y) { return {true, {1, 1}, {x, y}}; }
constexpr ScreenShape cells(unsigned columns, unsigned rows, unsigned x, unsigned y) {
    return {false, {columns, rows}, {x, y}};
}

constexpr ScreenShape k3x2 = cells(3, 2, 1, 1);
constexpr ScreenShape k2x3 = cells(2, 3, 1, 1);

// Control leaves the screen at (1,1) of the wall; a picture of 1920x1080.
constexpr Row kRows[] = {
    {one(1, 1), one(0, 1), {{2, 3}, {-4, 70}}, {{0, 0}, {1920, 70}}, {{0, 0}, {1920, 70}}},
    {one(1, 1), one(1, 0), {{0, 0}, {30, -1}}, {{0, 0}, {30, 1080}}, {{0, 0}, {30, 1080}}},
    {k3x2, cells(2, 4, 0, 1), {{0, 1}, {-1, 9}}, {{1, 1}, {1920, 9}}, {{1, 1}, {1920, 9}}},
    {k3x2, cells(2, 4, 2, 1), {{2, 1}, {1921, 9}}, {{0, 1}, {0, 9}}, {{0, 1}, {0, 9}}},
    {k3x2, cells(2, 4, 1, 0), {{2, 0}, {9, -1}}, {{2, 3}, {9, 1080}}, {{2, 3}, {9, 1080}}},
    {k3x2, cells(2, 4, 1, 2), {{2, 1}, {9, 1080}}, {{2, 0}, {9, 0}}, {{2, 0}, {9, 0}}},
    // Single to split: a cell measures 1023 / 3 = 341 units on both axes.
    {one(1, 1), cells(3, 2, 2, 1), {{0, 0}, {1921, 700}}, {{0, 0}, {0, 700}}, {{0, 2}, {0, 36}}},
    {one(1, 1),
     cells(3, 2, 0, 1),
     {{0, 0}, {-1, 340}},
     {{2, 0}, {1920, 340}},
     {{2, 0}, {1920, 680}}},
    {one(1, 1), cells(3, 2, 1, 2), {{0, 0}, {350, 1080}}, {{0, 0}, {350, 0}}, {{1, 0}, {27, 0}}},
    {one(1, 1), cells(3, 2, 1, 0), {{0, 0}, {341, -1}}, {{0, 1}, {341, 1080}}, {{1, 1}, {0, 1080}}},
    // Split to single: 1023 / 2 = 511 units a cell, the pointer divided by columns or rows.
    {k2x3, one(0, 1), {{0, 2}, {-1, 100}}, {{0, 0}, {1920, 100}}, {{0, 0}, {1920, 1055}}},
    {k2x3, one(2, 1), {{1, 1}, {1921, 100}}, {{0, 0}, {0, 100}}, {{0, 0}, {0, 544}}},
    {k2x3, one(1, 0), {{1, 0}, {101, -1}}, {{0, 0}, {101, 1080}}, {{0, 0}, {561, 1080}}},
    {k2x3, one(1, 2), {{0, 2}, {101, 1080}}, {{0, 0}, {101, 0}}, {{0, 0}, {50, 0}}},
    // Several screens on, diagonally, to itself, to a screen without cells.
    {one(0, 1), cells(2, 2, 9, 1), {{0, 0}, {1921, 600}}, {{0, 0}, {0, 600}}, {{0, 1}, {0, 178}}},
    {k3x2, k2x3, {{1, 1}, {5, 6}}, kNone, {{0, 0}, {5, 6}}},
    {k3x2, cells(2, 2, 2, 2), {{1, 1}, {5, 6}}, kNone, {{0, 0}, {5, 6}}},
    {one(1, 1), cells(0, 0, 0, 1), {{0, 0}, {-1, 5}}, {{0, 0}, {1920, 5}}, {{0, 0}, {1920, 0}}},
    // A pointer far off the screen stays within 32 bits.
    {cells(1, 2, 1, 1),
     one(1, 0),
     {{128, 0}, {2147483647, -1}},
     {{0, 0}, {2147483647, 1080}},
     {{0, 0}, {2147483647, 1080}}},
};

TEST(Arrival, PointerAndCellFollowBothRules) {
    for (const Row& row : kRows) {
        SCOPED_TRACE(testing::Message() << "row " << &row - kRows);
        EXPECT_EQ(arriveAtEdge(row.from, row.to, row.at, {1920, 1080}).value_or(kNone), row.plain);
        EXPECT_EQ(arriveScaled(row.from, row.to, row.at, {1920, 1080}), row.scaled);
    }
}

}  // namespace
