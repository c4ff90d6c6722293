#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "base/wall_records.h"
#include "remote/box_in_control.h"

/// The four ways out of a cell, as rows of one table: crossing, arrival, arrows and motion go by
/// it.

enum class Axis : std::uint8_t { kX, kY };
enum class Direction : std::uint8_t { kLeft, kRight, kUp, kDown };

struct DirectionRow {
    Direction direction;
    Axis axis;
    int step;                 ///< of cells and screens along the axis: -1 or 1
    bool reachedIsBeyond;     ///< the pointer is over the edge as soon as it reaches the extent
    unsigned resultAtBorder;  ///< of the crossing at the border of the wall
    const char* within;       ///< printed when control passes to the next cell
    const char* across;       ///< and when it passes to the next screen
};

/// Left, up and down leave their line open after the last dashes.
inline constexpr std::array<DirectionRow, 4> kDirections{{
    {Direction::kLeft, Axis::kX, -1, false, 0, "------left input\n------",
     "------left output\n------"},
    {Direction::kRight, Axis::kX, 1, false, 0, "------right input------\n",
     "------right output------\n"},
    {Direction::kUp, Axis::kY, -1, false, 1, "------up input\n------", "------up output\n------"},
    {Direction::kDown, Axis::kY, 1, true, 1, "------down input\n------",
     "------down output\n------"},
}};

constexpr const DirectionRow& rowOf(Direction direction) {
    return kDirections[static_cast<std::size_t>(direction)];
}

/// One number for each axis.
template <class T>
struct PerAxis {
    T x{}, y{};

    constexpr T& operator[](Axis axis) { return axis == Axis::kX ? x : y; }
    constexpr const T& operator[](Axis axis) const { return axis == Axis::kX ? x : y; }
    friend constexpr bool operator==(const PerAxis&, const PerAxis&) = default;
};
using Count = PerAxis<std::uint32_t>;
using Position = PerAxis<std::int32_t>;

constexpr Axis otherAxis(Axis axis) { return axis == Axis::kX ? Axis::kY : Axis::kX; }

/// The pointer on the edge that it tries to pass, and on the one where it comes in. `extent` is the
/// picture's along the axis.
constexpr std::int32_t edgeAhead(const DirectionRow& row, std::int32_t extent) {
    return row.step < 0 ? 0 : extent;
}
constexpr std::int32_t edgeBehind(const DirectionRow& row, std::int32_t extent) {
    return row.step < 0 ? extent : 0;
}

/// How far inside the new picture an arrow puts the pointer.
inline constexpr std::int32_t kArrowInset = 100;
constexpr std::int32_t insideEdge(const DirectionRow& row, std::int32_t extent) {
    return row.step < 0 ? extent - kArrowInset : kArrowInset;
}

/// True when a pointer at `at` has passed the edge.
constexpr bool isBeyond(const DirectionRow& row, std::int32_t at, std::int32_t extent) {
    return row.step < 0 ? at < 0 : at > extent || (row.reachedIsBeyond && at == extent);
}

/// True when there is one more of `count` behind number `at`.
constexpr bool hasNext(const DirectionRow& row, std::uint32_t at, std::uint32_t count) {
    return row.step < 0 ? at != 0 : at + 1 < count;
}

constexpr std::uint32_t next(const DirectionRow& row, std::uint32_t at) {
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(at) + row.step);
}

/// The width and height of a box's picture.
inline Position pictureOf(const BoxInControl& box) { return {box.XRIGHT, box.YDOWN}; }

inline Position pointerOf(const currentCtl& now) { return {now.pointerX, now.pointerY}; }
inline Count cellOf(const currentCtl& now) { return {now.cellX, now.cellY}; }
inline Count screenOf(const currentCtl& now) { return {now.outX, now.outY}; }

inline void setPointer(currentCtl& now, Axis axis, std::int32_t to) {
    (axis == Axis::kX ? now.pointerX : now.pointerY) = to;
}
