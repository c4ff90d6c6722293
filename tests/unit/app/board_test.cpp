#include "app/board.h"

#include "app/registers.h"
#include "unit/fixture.h"

namespace {

std::string word(std::uint32_t number) {
    char text[12];
    std::snprintf(text, sizeof text, " %08X", number);
    return text;
}

/// Writes down what is asked of the board.
struct Recorder : BoardAccess {
    std::optional<std::uint32_t> readRegister(std::uint32_t address) override {
        log += "read" + word(address) + "\n";
        return value;
    }
    void writeRegister(std::uint32_t address, std::uint32_t written) override {
        log += "write" + word(address) + word(written) + "\n";
    }
    void runShell(const char* command) override { log += std::string(command) + "\n"; }
    void rest(std::int64_t us) override { log += "wait " + std::to_string(us) + "\n"; }

    std::optional<std::uint32_t> value;
    std::string log;
};

std::string bringUp(std::string_view identifier, std::optional<std::uint32_t> value = 0) {
    Recorder board;
    board.value = value;
    bringUpBoard(identifier, board);
    return board.log;
}

TEST(BringUpBoard, RunsEachBoardsSequenceInOrder) {
    const auto boardA = [](const std::string& first, const std::string& second) {
        return "write 120F0170 00000000\nread 12220400\n" + first + "read 12220020\n" + second +
               "wait 1000000\nwrite 120F0170 00000001\n";
    };
    EXPECT_EQ(bringUp("BOARDA00001_0001_R1", 0xF000000F),
              boardA("write 12220400 F000000F\n", "write 12220020 F0000007\n"));
    EXPECT_EQ(bringUp("BOARDA00001_0001_R12", 0x10),
              boardA("write 12220400 00000018\n", "write 12220020 00000010\n"));
    EXPECT_EQ(bringUp("BOARDA00001_0001_R1", std::nullopt), boardA("", "")) << "cannot be read";
    EXPECT_EQ(bringUp("BOARDB0002_002_R1 rev 2"), "");
    EXPECT_EQ(bringUp("BOARDC0003_003_R1x"),
              "write 120F00FC 00000000\nwrite 120F0104 00000000\nwait 100000\n"
              "write 120F00FC 00000001\nwrite 120F0104 00000001\n");
    for (const char* unknown :
         {"", "BOARDA00001_0001_R", "BOARDC0003_003_r1", "xBOARDB0002_002_R1"}) {
        EXPECT_EQ(bringUp(unknown),
                  "himm 0x120F02D8     0x0\nwait 200000\nhimm 0x120F02D8     0x1\nwait 200000\n"
                  "himm 0x120F02E0     0x0\nwait 200000\nhimm 0x120F02E0     0x1\nwait 200000\n");
    }
}

TEST(HardwareInfo, GivesTheTextBetweenKeyAndQuote) {
    const Root root;
    /// Result, identifier and printed lines.
    const auto read = [] {
        char name[kBoardNameSize] = "";
        int result = 9;
        const std::string printed = printedBy([&] { result = readHdVersion(name); });
        return std::to_string(result) + " " + name + "\n" + printed;
    };
    EXPECT_EQ(read(), "0 \nopen hardware_info error\n");
    root.put("version/hardware_info", "");
    EXPECT_EQ(read(), "0 \n");
    const std::string key = "\"board\": \"";
    const std::string longest(63, 'b'), none = "no board identifier in hardware_info\n";
    const std::string longC = "BOARDC0003_003_R1" + std::string(46, '+');
    const std::tuple<std::string, std::string, std::string> rows[] = {
        {"{" + key + "BOARDB0002_002_R1\", " + key + "other\"}", "BOARDB0002_002_R1", ""},
        {key + longest + "\"", longest, ""},
        {key + longest + "b\"", "", "board identifier of 64 characters is no known board\n"},
        {key + longC + "-2\"", longC, ""},
        {key + "-" + longC + "\"", "", "board identifier of 64 characters is no known board\n"},
        {key + std::string(300, 'b') + "\"", "", none},
        {"\"board\":\"BOARDB0002_002_R1\"", "", none},
        {key + "BOARDB", "", none},
        {std::string(1, '\0') + key + "B\"", "", none},
    };
    for (const auto& [text, name, problem] : rows) {
        root.put("version/hardware_info", text);
        EXPECT_EQ(read(), "1 " + name + "\nread hardware_info:" + text.substr(0, 256).c_str() +
                              "\n" + problem + "get hdVersion:" + name + "\n");
    }
}

TEST(Registers, AreSeparateWordsUpToTheTopOfTheAddressSpace) {
    const Root root;
    std::uint32_t value = 7;
    EXPECT_EQ(Hi_GetReg(0x1000, nullptr), static_cast<int>(0xA0028006U));
    EXPECT_FALSE(std::filesystem::exists(root.path("dev"))) << "mapped without need";
    std::filesystem::create_directories(root.path("dev/mem"));
    EXPECT_EQ(Hi_GetReg(0x1000, &value) + Hi_SetReg(0x1000, 1), -2);
    EXPECT_EQ(value, 7U);
    std::filesystem::remove(root.path("dev/mem"));
    EXPECT_EQ(Hi_SetReg(0x1000, 7), 0);
    EXPECT_EQ(Hi_GetReg(0x1002, &value) + Hi_SetReg(0x1001, 1), -2) << "no register begins there";
    EXPECT_EQ(Hi_GetReg(0x1000, &value), 0);
    EXPECT_EQ(value, 7U);

    constexpr std::uint32_t kAddresses[] = {0, 0x120F0FFC, 0x120F1000, 0x80000000, 0xFFFFFFFC};
    for (const std::uint32_t address : kAddresses) {
        EXPECT_EQ(Hi_SetReg(address, ~address), 0) << std::hex << address;
    }
    for (const std::uint32_t address : kAddresses) {
        EXPECT_EQ(Hi_GetReg(address, &value), 0);
        EXPECT_EQ(value, ~address) << std::hex << address;
    }
    struct stat info {};
    stat(root.path("dev/mem").c_str(), &info);
    EXPECT_EQ(info.st_size, 0x100000000);
    EXPECT_LT(info.st_blocks * 512, 1 << 20) << "the window is not sparse";
}

}  // namespace
