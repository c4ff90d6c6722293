#include <gtest/gtest.h>

#include <array>
#include <string>

#include "capture/pcap.h"
#include "ctl/board.h"
#include "ctl/orders.h"
#include "words/hex.h"
#include "words/message.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(Words, ACommandCountsOnItsWayToTheConsoleANoticeOnThatToTheOsd) {
    const std::string quit = "OSDQUIT", jump = "MTO:1,0";
    const auto nameOf = [](const std::string& text, int port) {
        return words::decode({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()},
                             {0, port})
            .name;
    };
    EXPECT_EQ(nameOf(quit, 41236), "command OSDQUIT");
    EXPECT_EQ(nameOf(quit, 41237), "notice OSDQUIT");
    EXPECT_EQ(nameOf(quit, 0), "command or notice OSDQUIT");
    EXPECT_EQ(nameOf(quit, 80), "");
    EXPECT_EQ(nameOf(jump, 41237), "");
    EXPECT_EQ(nameOf(quit + "!", 41236), "") << "the whole text counts";
    EXPECT_EQ(nameOf("PAUSED", 41236), "command PAUSE") << "the start counts";
}

TEST(Words, HexIsReadWithAnyBlanksOrNotAtAll) {
    EXPECT_EQ(words::bytesOfHex("57ab 01:02,0x0a\n"), (Bytes{0x57, 0xAB, 0x01, 0x02, 0x0A}));
    for (const char* wrong : {"5", "57a", "5 7", "+5", "0x", "zz", "57 -1"}) {
        const auto bytes = words::bytesOfHex(wrong);
        EXPECT_TRUE(!bytes || bytes->empty()) << wrong;
    }
}

/// A file of packets of one kind, little-endian.
std::string pcapOf(std::uint8_t link, const std::vector<Bytes>& frames) {
    std::string text = capture::pcapHead();
    text[20] = static_cast<char>(link);
    for (const Bytes& frame : frames) {
        text += capture::pcapRecord(frame, 1'000'002);
    }
    return text;
}

/// "link" from 10.0.0.1:19357 to 10.0.0.2:80, with bytes before it.
Bytes packet(Bytes before, std::size_t cut = 0) {
    const Bytes ip{0x45, 0, 0, 32, 0,    0,    0, 0,  64, 17, 0, 0, 10,  0,   0,   1,
                   10,   0, 0, 2,  0x4B, 0x9D, 0, 80, 0,  12, 0, 0, 'l', 'i', 'n', 'k'};
    before.insert(before.end(), ip.begin(), ip.end() - static_cast<std::ptrdiff_t>(cut));
    return before;
}

/// "address:port>address:port text" of each datagram, then the problem.
std::string readAll(const std::string& file) {
    std::string all;
    const std::string problem = capture::readPcap(file, [&all](const capture::Datagram& datagram) {
        all += datagram.from.address + ":" + std::to_string(datagram.from.port) + ">" +
               datagram.to.address + ":" + std::to_string(datagram.to.port) + " " +
               std::string(datagram.bytes.begin(), datagram.bytes.end()) + " " +
               std::to_string(datagram.microseconds) + "\n";
    });
    return all + problem;
}

TEST(Pcap, ReadsDatagramsOfEveryUsualLink) {
    const std::string link = "10.0.0.1:19357>10.0.0.2:80 link 1000002\n";
    const Bytes ethernet{1, 1, 1, 1, 1, 1, 2, 2, 2, 2, 2, 2, 8, 0};
    Bytes tagged = ethernet;
    tagged.insert(tagged.end() - 2, {0x81, 0, 0, 5});
    Bytes cooked(16, 0), cooked2(20, 0);
    cooked[14] = 8;
    cooked2[0] = 8;
    EXPECT_EQ(readAll(pcapOf(1, {packet(ethernet), packet(tagged)})), link + link);
    EXPECT_EQ(readAll(pcapOf(101, {packet({})})), link);
    EXPECT_EQ(readAll(pcapOf(113, {packet(cooked)})), link);
    std::string second = pcapOf(0, {packet(cooked2)});
    second[20] = 20;  // 276
    second[21] = 1;
    EXPECT_EQ(readAll(second), link);
}

TEST(Pcap, TakesNothingThatIsNoWholeDatagramAndTellsAFileThatIsNone) {
    Bytes fragment = packet({}), tcp = packet({}), six = packet({}), shorter = packet({});
    fragment[6] = 0x20;
    tcp[9] = 6;
    six[0] = 0x65;
    shorter[25] = 7;
    EXPECT_EQ(readAll(pcapOf(101, {fragment, tcp, six, shorter, packet({}, 1), {}, {0x45}})), "");
    EXPECT_EQ(readAll(pcapOf(7, {})).substr(0, 28), "its packets are of a kind th");
    EXPECT_EQ(readAll("short"), "it is too short for a file of packets");
    EXPECT_EQ(readAll(std::string("\x0A\x0D\x0D\x0A") + std::string(40, 'x')).substr(0, 17),
              "it is a pcapng fi");
    EXPECT_EQ(readAll(std::string(40, 'x')), "it is no pcap file");
    const std::string whole = pcapOf(101, {packet({})});
    EXPECT_EQ(readAll(whole.substr(0, whole.size() - 1)), "it breaks off");
    EXPECT_EQ(readAll(whole + "x"), "10.0.0.1:19357>10.0.0.2:80 link 1000002\nit breaks off");
}

/// The datagrams that are sent, or the problem.
std::string shown(const ctl::Orders& orders) {
    std::string all = orders.problem;
    for (const std::string& text : orders.texts) {
        all += (all.empty() ? "" : "|") + text;
    }
    return all;
}

TEST(Orders, AreMadeOfWordsOrOfSettings) {
    EXPECT_EQ(shown(ctl::simpleOrder("osd", {"on"})), "OSDSTART");
    EXPECT_EQ(shown(ctl::simpleOrder("kvm", {"off"})), "KVMQUIT");
    EXPECT_EQ(shown(ctl::simpleOrder("mto", {"128", "0"})), "MTO:128,0");
    EXPECT_EQ(shown(ctl::hotkeyOrder({"ctrl+f1", "LEFTALT+2:open"})), "hotkey&CTRL+F1#ALT+2:OPEN");
    EXPECT_EQ(shown(ctl::hotkeyOrder({})), "hotkey&");
    const std::string settings = ctl::settingsWith(
        {"0,0,10.0.0.1#0,0,10.0.1.1#1,0,10.0.1.2-3", "1,0,10.0.0.2#0,0,10.0.1.3"});
    EXPECT_EQ(shown(ctl::relationOrder(settings)), "relation&0,0,10.0.0.1#1,0,10.0.0.2");
    EXPECT_EQ(shown(ctl::detailsOrder(settings, "")),
              "details&10.0.0.1#0,0,10.0.1.1#1,0,10.0.1.2-3|details&10.0.0.2#0,0,10.0.1.3");
    EXPECT_EQ(ctl::hotkeysIn("kUdpServerPort=80\nkActKeyEvent=\nkHotkeymap=A#B#\n"),
              (std::vector<std::string>{"A", "B"}));
    EXPECT_EQ(ctl::replacedBy("hotkey", "kUdpServerPort=80\nkActKeyEvent=\nkHotkeymap=A#\n"),
              "kHotkeymap=A#\n");
}

TEST(Orders, AreRefusedWhenAConsoleWouldNotTakeThemWhole) {
    const std::string wrong[] = {
        shown(ctl::simpleOrder("osd", {})),
        shown(ctl::simpleOrder("preview", {"on"})),
        shown(ctl::simpleOrder("mto", {"1"})),
        shown(ctl::simpleOrder("mto", {"129", "0"})),
        shown(ctl::simpleOrder("mto", {"1 ", "0"})),
        shown(ctl::simpleOrder("pause", {"now"})),
        shown(ctl::hotkeyOrder({"A#B"})),
        shown(ctl::hotkeyOrder({"rightalt+2"})),
        shown(ctl::hotkeyOrder({std::string(64, 'A')})),
        shown(ctl::relationOrder(ctl::settingsWith({"0,0,10.0.0.1", "0,0,10.0.0.2"}))),
        shown(ctl::relationOrder(ctl::settingsWith({}))),
        shown(ctl::detailsOrder(ctl::settingsWith({"0,0,10.0.0.1"}), "10.0.0.9"))};
    for (const std::string& problem : wrong) {
        EXPECT_NE(problem.find(' '), std::string::npos) << problem;
    }
    std::vector<std::string> long_;
    for (int x = 0; x < 128; ++x) {
        long_.push_back(std::to_string(x) + ",0,192.168.100." + std::to_string(100 + x));
    }
    EXPECT_EQ(shown(ctl::relationOrder(ctl::settingsWith(long_))).substr(0, 22),
              "the command would have");
}

TEST(BoardStatus, TellsDevicesPortsAndTheLastBox) {
    const std::string head = "[ack]\n[controlled]=10.0.0.1\nusb_link_device=";
    EXPECT_EQ(inWords(ctl::deviceCount(head + "120")), "1 mouse, 2 keyboards, no touch panel");
    EXPECT_EQ(inWords(ctl::deviceCount(head + "1102")),
              "mice, keyboards and touch panels together: 1102");
    const std::string ports =
        "   sl  local_address rem_address   st\n"
        "  120: 00000000:A114 00000000:0000 07\n  121: 00000000:0050 00000000:4B9D 07\n";
    EXPECT_TRUE(ctl::isBound(ports, 41236));
    EXPECT_FALSE(ctl::isBound(ports, 19357));
    const std::pair<const char*, const char*> kLogs[] = {
        {"get ip:10.0.1.1 port:80 input echo:vi_w=1\n", "10.0.1.1"},
        {"get ip:10.0.1.1 port:80 input echo:\nget new in 0,1->Ip:10.0.1.2\nend\n", "10.0.1.2"},
        {"get(0x0,0x0) output(2,1) location:0,0-->10.0.0.1   input locationt:0,0--->10.0.1.3",
         "10.0.1.3"},
        {"kvmset get curName=10.0.1.4-2 curIp=10.0.1.4\n", "10.0.1.4"},
        {"get new in 0,1->Ip:10.0.1.2\nstop kvm\n", "0.0.0.0"}};
    for (const auto& [log, box] : kLogs) {
        const auto last = ctl::lastBox(log);
        EXPECT_EQ(last ? last->box : "", box) << log;
    }
    EXPECT_FALSE(ctl::lastBox("nothing\n"));
}

}  // namespace
