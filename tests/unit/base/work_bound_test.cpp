#include "base/work_bound.h"

#include <gtest/gtest.h>

#include <optional>
#include <thread>

namespace {

TEST(WorkBound, TellsWhoDoesNotComeBack) {
    using std::chrono::milliseconds;
    WorkBound patient(std::chrono::hours(1));
    std::optional<WorkBound> hurried(std::in_place, milliseconds(1));
    patient.begin();
    EXPECT_TRUE(allWorkComesBack());
    hurried->begin();
    std::this_thread::sleep_for(milliseconds(3));
    EXPECT_FALSE(allWorkComesBack());
    hurried->end();
    EXPECT_TRUE(allWorkComesBack());
    hurried->begin();
    std::this_thread::sleep_for(milliseconds(3));
    hurried.reset();
    EXPECT_TRUE(allWorkComesBack()) << "a thread that was ended";
}

}  // namespace
