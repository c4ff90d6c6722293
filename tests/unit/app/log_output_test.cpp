#include "app/log_output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <string>

namespace {

std::string readAll(int fd) {
    std::string text;
    std::array<char, 4096> buffer{};
    for (ssize_t got = 0; (got = read(fd, buffer.data(), buffer.size())) > 0;) {
        text.append(buffer.data(), static_cast<std::size_t>(got));
    }
    return text;
}

}  // namespace

TEST(LogOutput, AReaderThatStandsStillCostsOneSecondAndTheLinesInBetween) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    LogSink sink{ends[1]};
    std::FILE* log = openLogStream(sink);
    ASSERT_NE(log, nullptr);
    const std::string line(999, 'x');
    const auto before = std::chrono::steady_clock::now();
    for (int i = 0; i < 200; ++i) {  // three times what a pipe holds
        std::fprintf(log, "%s\n", line.c_str());
    }
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(5));
    const std::string kept = readAll(ends[0]);
    EXPECT_GT(kept.size(), 50'000U);
    EXPECT_EQ(kept.substr(0, 1000), line + "\n");
    std::fprintf(log, "on again\n");
    const std::string after = readAll(ends[0]);
    EXPECT_EQ(after, "\nlog reader stood still, left out " + std::to_string(200'000 - kept.size()) +
                         " bytes\non again\n");
    std::fclose(log);
    close(ends[0]);
    close(ends[1]);
}

TEST(LogOutput, AStreamThatWasClosedAtTheStartTakesItsLinesNowhere) {
    LogSink sink{-1};
    std::FILE* log = openLogStream(sink);
    ASSERT_NE(log, nullptr);
    EXPECT_GT(std::fprintf(log, "a line\n"), 0);
    EXPECT_EQ(std::fclose(log), 0);
}
