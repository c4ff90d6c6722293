#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "rig/tool.h"

/// The table of a run: one row a figure, a column each for the console and the two bare loops.

using rig::percentile;
double median(std::vector<double> values);

class Table {
 public:
    /// A row; `ratio` is the console's value over the plain loop's, 0 for none.
    void add(std::string_view name, std::string_view unit, double console, double plain = -1,
             double batch = -1, double ratio = 0);
    /// A row that could not be measured.
    void addMissing(std::string_view name, std::string_view why);

    /// `limit` is kept when `value` is not above it; a line tells.
    void judge(std::string_view name, double value, double limit);
    bool allKept() const { return kept_; }

    void print() const;
    /// An array of objects, one a row. False when the file cannot be written.
    bool writeJson(const std::string& path) const;

 private:
    struct Row {
        std::string name, unit, why;
        double console, plain, batch, ratio;
    };
    std::vector<Row> rows_;
    bool kept_ = true;
};

/// What is being measured, on standard error.
void progress(std::string_view what);
