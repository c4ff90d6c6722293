#include "checks.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += "\n      " + line;
    }
    return text.empty() ? "\n      nothing" : text;
}

}  // namespace

void Checks::isTrue(std::string_view what, bool passed, std::string_view detail) {
    ++(passed ? passed_ : failed_);
    std::printf("  %s  %.*s%s%.*s\n", passed ? "ok  " : "FAIL", static_cast<int>(what.size()),
                what.data(), detail.empty() ? "" : ": ", static_cast<int>(detail.size()),
                detail.data());
}

void Checks::equal(std::string_view what, const std::vector<std::string>& expected,
                   const std::vector<std::string>& got) {
    isTrue(what, expected == got,
           expected == got ? "" : "expected" + joined(expected) + "\n    got" + joined(got));
}

void Checks::atMost(std::string_view what, double value, double limit, std::string_view unit) {
    char text[96];
    std::snprintf(text, sizeof(text), "%.6g %.*s (at most %.6g)", value,
                  static_cast<int>(unit.size()), unit.data(), limit);
    isTrue(what, value >= 0 && value <= limit, text);
}

bool Console::awaitListening() {
    return !machine.await("======>start listenInput<======").empty() &&
           !machine.await("end get input info").empty();
}

void Console::expectBox(std::string_view what, const std::vector<std::string>& expected) {
    checks.equal(what, expected, machine.take("box 80 ", expected.size()));
}

void Console::tap(std::string_view key) {
    machine.key(key, true);
    machine.key(key, false);
}

double Console::figure(const std::string& command) {
    const std::string value = machine.shell(command);
    return value.empty() || value.starts_with("failed") ? -1 : std::atof(value.c_str());
}

double Console::status(const std::string& field) {
    return figure("sed -n 's/^" + field + ":[^0-9]*\\([0-9]*\\).*/\\1/p' /proc/$daemon/status");
}
