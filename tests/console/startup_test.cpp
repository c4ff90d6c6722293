#include <linux/input-event-codes.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "console.h"

/// The start-up sequence as the log and the files show it.

namespace {

using ::testing::Contains;
using ::testing::Not;
using ::testing::StartsWith;

class Startup : public Console {};

struct Ended {
    int status;
    std::string text;
};

/// What a command printed, and how it ended.
Ended ended(const std::string& command) {
    std::FILE* const program = popen(command.c_str(), "r");
    std::string text(10'000, '\0');
    text.resize(std::fread(text.data(), 1, text.size(), program));
    return {WEXITSTATUS(pclose(program)), text};
}

}  // namespace

TEST_F(Startup, WholeLogIsTheGoldenFile) {
    plan.wall.pop_back();
    plan.virtualClock = true;  // the box's answer is part of it
    start();
    std::string log;
    for (const std::string& line : daemon().lines()) {
        log += (line.starts_with("thread tid-->") ? "thread tid-->N" : line) + "\n";
    }
    std::ifstream golden(CONSOLE_GOLDEN "/startup.log");
    EXPECT_EQ(log, std::string(std::istreambuf_iterator<char>(golden), {}));
}

TEST_F(Startup, UnusableFilesCostOneLineEach) {
    plan.osd = false;
    plan.wall.clear();
    world().board.write("version/hardware_info", "no json at all");
    world().board.write("data/net.ini", "");
    world().board.write("data/tav_rik.ini", std::string("kUdpServerPort=\0\n", 17));
    world().board.write("work/ip.txt", std::string(2049, 'x'));
    // The board is unknown, so the fallback's shell commands run with their waits before the rest.
    rig::Daemon console(world().board.root(), world().board.work());
    for (const char* line : {"this kvm use dma", "ip.txt error", "locak Ip=kEth0Ip",
                             "/data/tav_rik.ini holds a NUL byte: no settings loaded, file kept as "
                             "/data/tav_rik.ini.refused",
                             "======>start listenInput<======"}) {
        EXPECT_TRUE(console.waitUntilPrinted(line, kLimit)) << line;
    }
    EXPECT_THAT(console.lines(), Not(Contains("this kvm use osd")));
    EXPECT_EQ(board().read("data/tav_rik.ini.refused").size(), 17U);
    EXPECT_THAT(board().read("data/tav_rik.ini"), StartsWith("kUdpServerPort=80\n"));
    EXPECT_TRUE(console.running());
}

TEST_F(Startup, AUserListWithAnEmptyLineEndsItWithAStatusOfItsOwn) {
    world().board.write("work/ip.txt", "IP{\r\n10.0.0.5\r\n\r\n}\r\n");
    const auto [status, text] =
        ended("cd " + board().work().string() + " && exec timeout 10 " +
              rig::Daemon::programPath() + " --root " + board().root().string());
    EXPECT_EQ(status, 78);
    EXPECT_TRUE(
        text.ends_with("ip.txt: an empty line between IP{ and }: the console cannot start\n"))
        << text;
}

TEST_F(Startup, LoadsAsManyMapLinesAsTheTableHolds) {
    std::string settings =
        "kUdpServerPort=81\nkActKeyEvent=\nkHotkeymap=\nkHotCmd0=\nkHotCmd1=\nkHotCmd2=\n"
        "kOutNum=4089\nkOutIpmap0=0,0,127.0.0.20";
    for (int x = 0; x < 100; ++x) {  // a long line
        settings += "#" + std::to_string(x) + ",0,127.0.0.31-8000";
    }
    settings += "\n";
    for (int n = 1; n < 4089; ++n) {
        settings += "kOutIpmap" + std::to_string(n) + "=" + std::to_string(n % 129) + "," +
                    std::to_string(n / 129) + ",127.0.0.20#0,0,127.0.0.31-8000\n";
    }
    world().board.write("data/tav_rik.ini", settings);
    rig::Daemon console(world().board.root(), world().board.work());
    ASSERT_TRUE(console.waitForLine("out number-->4089", rig::Milliseconds{15000}));
    EXPECT_TRUE(console.waitForLine("in:xmax:100,ymax:1,ip:127.0.0.31-8000", kLimit));
    ASSERT_TRUE(console.waitForLine("======>start listenInput<======", rig::Milliseconds{15000}));
    EXPECT_EQ(board().read("data/tav_rik.ini"), settings) << "a full table is written back whole";
}

/// In this process's own network namespace; elsewhere there may be no such interface to make.
bool makeEth0() {
    return std::system(
               "ip link add eth0 type veth peer name eth1 2>/dev/null && ip addr add "
               "192.168.77.1/24 dev eth0 && ip link set eth0 up && ip link set eth1 up") == 0;
}

TEST_F(Startup, JoinsTheControlGroupOnEth0) {
    if (!makeEth0()) {
        GTEST_SKIP() << "no interface eth0 can be made here";
    }
    start();
    EXPECT_THAT(daemon().lines(), Contains("add mlt:224.168.1.1"));
    const rig::Box management({{"192.168.77.1", 0}});
    ASSERT_TRUE(management.send({"224.168.1.1", 41236}, "KVMQUIT"));
    expectLine("kvm quit");
}

TEST_F(Startup, TakesThePortAndJoinsTheGroupWhenTheyAreThereLater) {
    auto other = std::make_unique<rig::Box>(std::vector<rig::Endpoint>{{"127.0.0.1", 41236}});
    start();
    EXPECT_THAT(daemon().errorLines(), Contains("bind error: Address already in use"));
    board().key(kKeyboard, KEY_A, true);
    expectReport(kFirstBox, "key down A");
    other.reset();
    const bool eth0 = makeEth0();
    constexpr rig::Milliseconds kRepair{8000};
    EXPECT_TRUE(daemon().waitForLine("control port 41236 is open now", kRepair));
    EXPECT_EQ(daemon().waitForLine("joined 224.168.1.1 on eth0", kLimit).has_value(), eth0);
    const rig::Box management({{eth0 ? "192.168.77.1" : "127.0.0.1", 0}});
    ASSERT_TRUE(management.send({eth0 ? "224.168.1.1" : "127.0.0.1", 41236}, "KVMQUIT"));
    expectLine("kvm quit");
}

TEST_F(Startup, HearsTheGroupWhateverBecomesOfEth0) {
    if (!makeEth0()) {
        GTEST_SKIP() << "no interface eth0 can be made here";
    }
    start();
    constexpr const char* kBack = " && ip link set eth0 up && ip link set eth1 up";
    for (const auto& [what, address] :
         {std::pair{"ip link set eth1 down && sleep 0.3 && ip link set eth1 up", "192.168.77.1"},
          {"ip link set eth0 down && sleep 0.3 && ip link set eth0 up", "192.168.77.1"},
          {"ip addr flush dev eth0 && ip addr add 192.168.78.9/24 dev eth0", "192.168.78.9"}}) {
        SCOPED_TRACE(what);
        ASSERT_EQ(std::system((std::string(what) + kBack).c_str()), 0);
        board().key(kKeyboard, KEY_A, true);
        expectReport(kFirstBox, "key down A");
        board().key(kKeyboard, KEY_A, false);
        expectReport(kFirstBox, "keys up");
        const rig::Box management({{address, 0}});
        ASSERT_TRUE(management.send({"224.168.1.1", 41236}, "KVMQUIT"));
        expectLine("kvm quit");
    }
}

TEST_F(Startup, OnlyThoseMayCommandWhoWereNamed) {
    plan.options = {"--allow-control", "127.0.0.8/30", "--no-multicast"};
    start();
    send("PREVIEWQUIT");
    expectLine("control: 1 datagrams from addresses that may not command, the last from 127.0.0.1");
    send("PREVIEWQUIT");
    const rig::Box named({{"127.0.0.9", 0}});
    ASSERT_TRUE(named.send({"127.0.0.1", 41236}, "KVMQUIT"));
    expectLine("kvm quit");
    EXPECT_THAT(daemon().lines(), Not(Contains("preview quit")));
    EXPECT_THAT(daemon().lines(), Not(Contains("add mlt:224.168.1.1")));
}

TEST_F(Startup, TheServiceManagerHearsThatItIsReadyAndAlive) {
    const std::string path = board().root() / "manager";
    const int manager = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_un name{};
    name.sun_family = AF_UNIX;
    path.copy(name.sun_path, sizeof name.sun_path - 1);
    ASSERT_EQ(bind(manager, reinterpret_cast<const sockaddr*>(&name), sizeof name), 0);
    setenv("NOTIFY_SOCKET", path.c_str(), 1);
    start();
    unsetenv("NOTIFY_SOCKET");
    for (const char* state : {"READY=1", "WATCHDOG=1", "WATCHDOG=1"}) {
        pollfd waiting{manager, POLLIN, 0};
        std::array<char, 32> text{};
        EXPECT_EQ(poll(&waiting, 1, 3000), 1);
        EXPECT_GT(recv(manager, text.data(), text.size() - 1, MSG_DONTWAIT), 0);
        EXPECT_STREQ(text.data(), state);
    }
    close(manager);
}

TEST_F(Startup, RunsWithoutStandardStreamsAndWritesNoLineElsewhere) {
    world();
    const std::string command = "cd " + board().work().string() + " && exec timeout 1 " +
                                rig::Daemon::programPath() + " --root " + board().root().string() +
                                " <&- >&- 2>&-";
    EXPECT_NE(std::system(command.c_str()), 0) << "ended by the clock";
    const std::string settings = board().read("data/tav_rik.ini");
    EXPECT_THAT(settings, StartsWith("kUdpServerPort="));
    EXPECT_EQ(settings.find("result-->"), std::string::npos);
}

TEST_F(Startup, ASecondConsoleEndsAtOnceAndTheFirstGoesOn) {
    start();
    const rig::Board other;
    const auto [status, text] = ended("exec timeout 10 " + rig::Daemon::programPath() + " --root " +
                                      other.root().string() + " 2>&1");
    EXPECT_EQ(text, "tavrik: another console runs in this network namespace\n");
    EXPECT_EQ(status, 1);
    send("KVMQUIT");
    expectLine("kvm quit");
}

TEST(CommandLine, OptionsAreAnsweredInOneGo) {
    const struct {
        const char* arguments;
        int status;
        const char* begins;
    } rows[] = {{"--version", 0, "tavrik T-0.0.0.6\n"},
                {"-V", 0, "tavrik T-0.0.0.6\n"},
                {"--help", 0, "usage: tavrik [options]\n"},
                {"-h --nonsense", 0, "usage: tavrik [options]\n"},
                {"--nonsense", 2, "tavrik: unknown option --nonsense (see --help)\n"},
                {"-x", 2, "tavrik: unknown option -x (see --help)\n"},
                {"extra", 2, "tavrik: unexpected argument extra (see --help)\n"},
                {"--root", 2, "tavrik: no value behind --root (see --help)\n"},
                {"--root=", 2, "tavrik: --root needs a directory\n"},
                {"--root /missing", 2, "tavrik: --root /missing: No such file or directory\n"},
                {"--root /dev/null", 2, "tavrik: --root /dev/null: Not a directory\n"},
                {"--allow-control 10.0.0.0/33", 2,
                 "tavrik: --allow-control needs an address or address/bits\n"}};
    for (const auto& row : rows) {
        const auto [status, text] =
            ended(rig::Daemon::programPath() + " " + row.arguments + " 2>&1");
        EXPECT_EQ(status, row.status) << row.arguments;
        EXPECT_THAT(text, StartsWith(row.begins)) << row.arguments;
    }
}
