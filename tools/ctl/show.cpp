#include "ctl/show.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <vector>

#include "base/text.h"

namespace ctl {
namespace {

struct Look {
    const char* name;
    const char* colour;
};

const Look& lookOf(Severity severity) {
    static constexpr std::array<Look, 3> kLooks{
        {{"error", "\x1B[31m"}, {"warning", "\x1B[33m"}, {"note", "\x1B[36m"}}};
    return kLooks[static_cast<std::size_t>(severity)];
}

std::string counted(std::size_t count, const char* what) {
    return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

std::vector<std::string_view> linesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        lines.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

/// How long the longest common subsequence of the rests is: element i*(columns+1)+j for those from
/// i and j on.
using Lines = std::vector<std::string_view>;
std::vector<std::uint32_t> commonRests(const Lines& before, const Lines& after) {
    const std::size_t width = after.size() + 1;
    std::vector<std::uint32_t> common((before.size() + 1) * width);
    for (std::size_t i = before.size(); i-- > 0;) {
        for (std::size_t j = after.size(); j-- > 0;) {
            common[i * width + j] = before[i] == after[j] ? common[(i + 1) * width + j + 1] + 1
                                                          : std::max(common[(i + 1) * width + j],
                                                                     common[i * width + j + 1]);
        }
    }
    return common;
}

}  // namespace

std::string asText(const Checked& checked, const std::string& file, bool colours) {
    std::string all;
    for (const Finding& finding : checked.findings) {
        const Look& look = lookOf(finding.severity);
        all += file + (finding.line == 0 ? "" : ":" + std::to_string(finding.line)) + ": " +
               (colours ? look.colour : "") + look.name + (colours ? "\x1B[0m" : "") + ": " +
               withoutControls(finding.message) + '\n';
        if (!finding.text.empty()) {
            all += "    " + withoutControls(finding.text) + '\n';
        }
        if (!finding.advice.empty()) {
            all += "    write: " + withoutControls(finding.advice) + '\n';
        }
    }
    const std::size_t errors = checked.count(Severity::kError);
    const std::size_t warnings = checked.count(Severity::kWarning);
    all +=
        file + ": " +
        (errors + warnings == 0 ? "fine"
                                : counted(errors, "error") + ", " + counted(warnings, "warning")) +
        "; " + withoutControls(checked.wall) + '\n';
    return all;
}

std::string asJson(const Checked& checked, const std::string& file) {
    nlohmann::json findings = nlohmann::json::array();
    for (const Finding& finding : checked.findings) {
        findings.push_back({{"line", finding.line},
                            {"severity", lookOf(finding.severity).name},
                            {"message", finding.message},
                            {"text", finding.text},
                            {"advice", finding.advice}});
    }
    const nlohmann::json whole{{"file", file},
                               {"wall", checked.wall},
                               {"clean", checked.takesEverything},
                               {"findings", findings}};
    // What is no UTF-8 in the file becomes a replacement character.
    return whole.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + '\n';
}

std::string difference(std::string_view before, std::string_view after) {
    Lines old = linesOf(before), fresh = linesOf(after);
    const auto [a, b] = std::ranges::mismatch(old, fresh);
    old.erase(old.begin(), a);
    fresh.erase(fresh.begin(), b);
    while (!old.empty() && !fresh.empty() && old.back() == fresh.back()) {
        old.pop_back();
        fresh.pop_back();
    }
    constexpr std::size_t kMostCompared = std::size_t{1} << 24;
    const bool isCompared = (old.size() + 1) * (fresh.size() + 1) <= kMostCompared;
    const auto common = isCompared ? commonRests(old, fresh) : std::vector<std::uint32_t>{};
    const std::size_t width = fresh.size() + 1;
    std::string all;
    std::size_t i = 0, j = 0;
    while (i < old.size() || j < fresh.size()) {
        const bool both = i < old.size() && j < fresh.size();
        if (both && isCompared && old[i] == fresh[j]) {
            ++i, ++j;
        } else if (i < old.size() && (!both || !isCompared ||
                                      common[(i + 1) * width + j] >= common[i * width + j + 1])) {
            all += '-' + withoutControls(old[i++]) + '\n';
        } else {
            all += '+' + withoutControls(fresh[j++]) + '\n';
        }
    }
    return all;
}

}  // namespace ctl
