#include "figures.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>

double median(std::vector<double> values) { return percentile(std::move(values), 0.5); }

void Table::add(std::string_view name, std::string_view unit, double console, double plain,
                double batch, double ratio) {
    rows_.push_back({std::string(name), std::string(unit), "", console, plain, batch, ratio});
}

void Table::addMissing(std::string_view name, std::string_view why) {
    rows_.push_back({std::string(name), "", std::string(why), -1, -1, -1, 0});
}

void Table::judge(std::string_view name, double value, double limit) {
    const bool good = value >= 0 && value <= limit;
    kept_ = kept_ && good;
    std::printf("%s  %.*s: %.2f (at most %.2f)\n", good ? "ok  " : "FAIL",
                static_cast<int>(name.size()), name.data(), value, limit);
}

void Table::print() const {
    std::printf("%-46s %-6s %10s %10s %10s %7s\n", "", "", "console", "plain", "batch", "ratio");
    const auto cell = [](double value) {
        char text[32] = "";
        const bool whole = value >= 100 || value == std::floor(value);
        if (value >= 0) {
            std::snprintf(text, sizeof text, "%.*f", whole ? 0 : 2, value);
        }
        return std::string(text);
    };
    for (const Row& row : rows_) {
        if (!row.why.empty()) {
            std::printf("%-46s %s\n", row.name.c_str(), row.why.c_str());
            continue;
        }
        std::printf("%-46s %-6s %10s %10s %10s %7s\n", row.name.c_str(), row.unit.c_str(),
                    cell(row.console).c_str(), cell(row.plain).c_str(), cell(row.batch).c_str(),
                    row.ratio > 0 ? cell(row.ratio).c_str() : "");
    }
}

bool Table::writeJson(const std::string& path) const {
    std::ofstream file(path);
    file << "[";
    for (const Row& row : rows_) {
        file << (&row == rows_.data() ? "\n" : ",\n") << "  {\"name\": \"" << row.name << "\"";
        if (!row.why.empty()) {
            file << ", \"missing\": \"" << row.why << "\"";
        } else {
            file << ", \"unit\": \"" << row.unit << "\", \"console\": " << row.console;
        }
        for (const auto& [key, value] :
             {std::pair{"plain", row.plain}, {"batch", row.batch}, {"ratio", row.ratio}}) {
            if (value > 0) {
                file << ", \"" << key << "\": " << value;
            }
        }
        file << "}";
    }
    file << "\n]\n";
    return file.good();
}

void progress(std::string_view what) {
    std::fprintf(stderr, "%.*s ...\n", static_cast<int>(what.size()), what.data());
}
