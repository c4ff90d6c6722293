#include "app/board.h"

#include <gmock/gmock.h>

#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include "app/base/path_prefix.h"
#include "unit/config/scratch.h"

namespace {

using testing::ElementsAre;

std::string hex(std::uint32_t number) {
    std::array<char, 9> text{};
    std::snprintf(text.data(), text.size(), "%08X", number);
    return text.data();
}

/// Writes down what is asked of the board.
class Recorder : public BoardAccess {
 public:
    std::optional<std::uint32_t> readRegister(std::uint32_t address) override {
        log.push_back("read " + hex(address));
        return value;
    }
    void writeRegister(std::uint32_t address, std::uint32_t written) override {
        log.push_back("write " + hex(address) + " " + hex(written));
    }
    void runShell(const char* command) override { log.emplace_back(command); }
    void wait(std::int64_t microseconds) override {
        log.push_back("wait " + std::to_string(microseconds));
    }

    std::optional<std::uint32_t> value;
    std::vector<std::string> log;
};

std::vector<std::string> bringUp(std::string_view identifier,
                                 std::optional<std::uint32_t> value = 0) {
    Recorder board;
    board.value = value;
    bringUpBoard(identifier, board);
    return board.log;
}

TEST(BringUpBoard, RunsEachBoardsSequenceInOrder) {
    EXPECT_THAT(bringUp("BOARDA00001_0001_R1", 0xF000000F),
                ElementsAre("write 120F0170 00000000", "read 12220400", "write 12220400 F000000F",
                            "read 12220020", "write 12220020 F0000007", "wait 1000000",
                            "write 120F0170 00000001"));
    EXPECT_THAT(bringUp("BOARDA00001_0001_R1", 0x10)[2], "write 12220400 00000018");
    EXPECT_THAT(bringUp("BOARDB0002_002_R1"), ElementsAre());
    EXPECT_THAT(bringUp("BOARDC0003_003_R1"),
                ElementsAre("write 120F00FC 00000000", "write 120F0104 00000000", "wait 100000",
                            "write 120F00FC 00000001", "write 120F0104 00000001"));
}

TEST(BringUpBoard, GivesUnknownBoardsTheShellSequence) {
    for (const char* identifier :
         {"", "BOARDA00001_0001_R", "BOARDC0003_003_r1", "xBOARDB0002_002_R1"}) {
        EXPECT_THAT(bringUp(identifier),
                    ElementsAre("himm 0x120F02D8     0x0", "wait 200000", "himm 0x120F02D8     0x1",
                                "wait 200000", "himm 0x120F02E0     0x0", "wait 200000",
                                "himm 0x120F02E0     0x1", "wait 200000"))
            << identifier;
    }
}

TEST(BringUpBoard, ComparesOnlyTheLeadingCharacters) {
    EXPECT_EQ(bringUp("BOARDA00001_0001_R12"), bringUp("BOARDA00001_0001_R1"));
    EXPECT_EQ(bringUp("BOARDB0002_002_R1 rev 2"), bringUp("BOARDB0002_002_R1"));
    EXPECT_EQ(bringUp("BOARDC0003_003_R1x"), bringUp("BOARDC0003_003_R1"));
}

TEST(BringUpBoard, LeavesARegisterAloneThatItCannotRead) {
    EXPECT_THAT(bringUp("BOARDA00001_0001_R1", std::nullopt),
                ElementsAre("write 120F0170 00000000", "read 12220400", "read 12220020",
                            "wait 1000000", "write 120F0170 00000001"));
}

class HardwareInfo : public testing::Test {
 protected:
    HardwareInfo() { setPathPrefix(scratch_.path()); }
    ~HardwareInfo() override { setPathPrefix(""); }

    /// Result, identifier and printed lines for the file's text.
    std::vector<std::string> read() {
        std::array<char, kBoardNameSize> name{};
        testing::internal::CaptureStdout();
        const int result = readHdVersion(name.data());
        return {std::to_string(result), name.data(), testing::internal::GetCapturedStdout()};
    }
    std::vector<std::string> read(const std::string& text) {
        scratch_.put("version/hardware_info", text);
        return read();
    }

    const Scratch scratch_;
};

TEST_F(HardwareInfo, GivesTheTextBetweenKeyAndQuote) {
    const std::string text = "{\"board\": \"BOARDB0002_002_R1\", \"board\": \"other\"}";
    EXPECT_THAT(read(text),
                ElementsAre("1", "BOARDB0002_002_R1",
                            "read hardware_info:" + text + "\nget hdVersion:BOARDB0002_002_R1\n"));
    const std::string longest(63, 'b');
    EXPECT_EQ(read("\"board\": \"" + longest + "\"")[1], longest);
}

TEST_F(HardwareInfo, WithoutAUsableIdentifierTheBoardIsUnknown) {
    const std::string tooLong = "\"board\": \"" + std::string(64, 'b') + "\"";
    EXPECT_THAT(read(tooLong), ElementsAre("1", "",
                                           "read hardware_info:" + tooLong +
                                               "\nboard identifier of 64 characters is no known "
                                               "board\nget hdVersion:\n"));
    const std::string beyondTheBuffer = "\"board\": \"" + std::string(300, 'b') + "\"";
    for (const std::string& text :
         {std::string("\"board\":\"BOARDB0002_002_R1\""), std::string("\"board\": \"BOARDB"),
          std::string("\"board\": \""), std::string("\0\"board\": \"B\"", 13), beyondTheBuffer}) {
        EXPECT_THAT(read(text),
                    ElementsAre("1", "",
                                "read hardware_info:" + std::string(text.substr(0, 256).c_str()) +
                                    "\nget hdVersion:\n"));
    }
}

TEST_F(HardwareInfo, MissingOrEmptyFileGivesNothing) {
    EXPECT_THAT(read(), ElementsAre("0", "", "open hardware_info error\n"));
    EXPECT_THAT(read(""), ElementsAre("0", "", ""));
}

}  // namespace
