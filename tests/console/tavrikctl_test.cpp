#include <linux/input-event-codes.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <tuple>

#include "console.h"

namespace {

struct Ended {
    int status;
    std::string out;
};

/// tavrikctl with these words, both streams.
Ended ran(const std::string& words) {
    std::FILE* const program = popen((TAVRIKCTL " " + words + " 2>&1 </dev/null").c_str(), "r");
    std::string text;
    std::array<char, 1024> part{};
    for (std::size_t got = 1; got > 0; text.append(part.data(), got)) {
        got = std::fread(part.data(), 1, part.size(), program);
    }
    return {WEXITSTATUS(pclose(program)), text};
}

using Tavrikctl = Console;

TEST_F(Tavrikctl, SendsCommandsThatAreWorkedOffWhenItEnds) {
    start();
    const Ended jump = ran("send mto 1 0 --to 127.0.0.20");
    EXPECT_EQ(jump.status, 0) << jump.out;
    EXPECT_TRUE(daemon().waitForLine("127.0.0.1 get data-->MTO:1,0", kLimit));
    EXPECT_EQ(box("127.0.0.41").next(rig::Milliseconds(0))->text, "lights caps off num off");

    const Ended unasked = ran("send hotkey CTRL+F1 --to 127.0.0.20");
    EXPECT_EQ(unasked.status, 2);
    EXPECT_NE(unasked.out.find("replaces all hotkeys of 127.0.0.20"), std::string::npos);
    EXPECT_EQ(ran("send hotkey CTRL+F1 --yes --to 127.0.0.20").status, 0);
    EXPECT_NE(board().read("data/tav_rik.ini").find("kHotkeymap=LEFTCTRL+F1#"), std::string::npos);

    EXPECT_EQ(ran("send mto 1 0 --to 127.0.0.20 --dry-run").status, 0);
    EXPECT_EQ(ran("send mto --to 127.0.0.20").status, 2);
    EXPECT_EQ(ran("send mto 1 0").status, 2) << "to nobody";
    EXPECT_EQ(ran("send osd on --to 127.0.0.21").status, 3) << "another console's address";
    EXPECT_FALSE(daemon().waitForLine("mouse to error", rig::Milliseconds(0)));
}

TEST_F(Tavrikctl, AsksForTheDevices) {
    start();
    const Ended asked = ran("status 127.0.0.20");
    EXPECT_EQ(asked.status, 0);
    EXPECT_TRUE(asked.out.starts_with("127.0.0.20: 1 mouse, 1 keyboard, no touch panel\n"))
        << asked.out;
    EXPECT_NE(ran("status --json 127.0.0.20").out.find("\"keyboards\": \"1\""), std::string::npos);
    EXPECT_EQ(ran("status 127.0.0.21").status, 3);
}

TEST_F(Tavrikctl, WatchesTheOsdAndTakesNothingFromIt) {
    start();
    std::FILE* const watch = popen(TAVRIKCTL " watch --count 3 2>&1", "r");
    std::array<char, 200> line{};
    ASSERT_NE(std::fgets(line.data(), line.size(), watch), nullptr);
    if (std::string_view(line.data()).find("CAP_NET_RAW") != std::string_view::npos) {
        EXPECT_EQ(WEXITSTATUS(pclose(watch)), 3);
        GTEST_SKIP() << "no namespace of its own";
    }
    send("OSDSTART");
    expectReport(kFirstBox, "keys up");
    board().key(kKeyboard, KEY_A, true);
    board().key(kKeyboard, KEY_A, false);
    board().key(kKeyboard, KEY_ESC, true);
    const std::tuple<const char*, int, const char*> kSeen[] = {
        {"keyboard report: ", 41238, "key down A"},
        {"keyboard report: ", 41238, "keys up"},
        {"notice OSDQUIT: ", 41237, "OSDQUIT"}};
    for (const auto& [name, port, words] : kSeen) {
        ASSERT_NE(std::fgets(line.data(), line.size(), watch), nullptr);
        EXPECT_TRUE(
            std::string_view(line.data())
                .ends_with(" > 127.0.0.1:" + std::to_string(port) + "  " + name + words + "\n"))
            << line.data();
        const auto report = world().osd(static_cast<std::uint16_t>(port)).next(kLimit);
        EXPECT_EQ(report ? report->text : "nothing", words) << "the OSD has all of it";
    }
    EXPECT_EQ(WEXITSTATUS(pclose(watch)), 0);
}

}  // namespace
