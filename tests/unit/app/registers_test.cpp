#include "app/registers.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "app/base/path_prefix.h"
#include "app/board.h"
#include "unit/config/scratch.h"

namespace {

/// A scratch directory as path prefix, so that a sparse file is the register window.
class Registers : public testing::Test {
 protected:
    Registers() { setPathPrefix(scratch_.path()); }
    ~Registers() override { setPathPrefix(""); }

    const Scratch scratch_;
};

std::uint32_t registerAt(std::uint32_t address) {
    std::uint32_t value = 0xDEADBEEF;
    EXPECT_EQ(Hi_GetReg(address, &value), 0);
    return value;
}

TEST_F(Registers, AreSeparateWordsUpToTheTopOfTheAddressSpace) {
    EXPECT_EQ(registerAt(0x12220400), 0U) << "never written";
    constexpr std::uint32_t kAddresses[] = {0, 0x120F0FFC, 0x120F1000, 0x80000000, 0xFFFFFFFC};
    for (const std::uint32_t address : kAddresses) {
        EXPECT_EQ(Hi_SetReg(address, ~address), 0) << std::hex << address;
    }
    for (const std::uint32_t address : kAddresses) {
        EXPECT_EQ(registerAt(address), ~address) << std::hex << address;
    }
    EXPECT_EQ(registerAt(0x120F0FF8), 0U);
    EXPECT_EQ(registerAt(0x120F1004), 0U);
    struct stat info {};
    stat(scratch_.path("dev/mem").c_str(), &info);
    EXPECT_EQ(info.st_size, 0x100000000);
    EXPECT_LT(info.st_blocks * 512, 1 << 20) << "the window is not sparse";
}

TEST_F(Registers, RefuseWhatCannotBeMapped) {
    std::uint32_t value = 7;
    EXPECT_EQ(Hi_GetReg(0x1000, nullptr), static_cast<int>(0xA0028006U));
    EXPECT_FALSE(std::filesystem::exists(scratch_.path("dev"))) << "mapped without need";
    EXPECT_EQ(Hi_GetReg(0x1002, &value), -1);
    EXPECT_EQ(Hi_SetReg(0x1001, 1), -1);
    std::filesystem::create_directories(scratch_.path("dev/mem"));
    EXPECT_EQ(Hi_SetReg(0x1000, 1), -1);
    EXPECT_EQ(Hi_GetReg(0x1000, &value), -1);
    EXPECT_EQ(value, 7U);
}

TEST_F(Registers, ServeTheBoardSequences) {
    struct : RealBoardAccess {
        void wait(std::int64_t) override {}
    } board;
    Hi_SetReg(0x12220400, 0x80000001);
    Hi_SetReg(0x12220020, 0xFFFFFFFF);
    bringUpBoard("BOARDA00001_0001_R1", board);
    EXPECT_EQ(registerAt(0x120F0170), 1U);
    EXPECT_EQ(registerAt(0x12220400), 0x80000009);
    EXPECT_EQ(registerAt(0x12220020), 0xFFFFFFF7);
}

}  // namespace
