#include <atomic>
#include <thread>

#include "remote/source_query.h"
#include "unit/remote/board.h"

namespace {

std::string shown(const std::optional<ReplyNumber>& number) {
    return number ? std::to_string(number->value) + (number->overlong ? "!" : "") : "-";
}

TEST(BoxReply, ValuesAreReadAsFourCharacters) {
    using enum PointerMode;
    struct Row {
        const char* text;
        const char* width;
        const char* height;
        std::optional<PointerMode> mode;
    };
    for (const Row& row : {Row{"vi_w=1920&vi_h=1080&kvm=abs", "1920", "1080", kAbsolute},
                           Row{"kvm=rel&x&vi_h=720&vi_w=1280", "1280!", "720", kRelative},
                           Row{"vi_w=19200&vi_h=1080", "1920!", "1080!", std::nullopt},
                           Row{"vi_w=800", "800", "-", std::nullopt},
                           Row{"vi_w=80x&vi_h=&kvm=", "80", "-1", kUnchanged},
                           Row{"kvm=relx&vi_h=1", "-", "1", kUnchanged},
                           Row{"kvm=re", "-", "-", kUnchanged}, Row{"", "-", "-", std::nullopt}}) {
        SCOPED_TRACE(row.text);
        const BoxReply reply = parseBoxReply(row.text);
        EXPECT_EQ(shown(reply.width), row.width);
        EXPECT_EQ(shown(reply.height), row.height);
        EXPECT_EQ(reply.mode, row.mode);
    }
}

TEST(BoxReply, RecordIsChosenByTheLastOctet) {
    for (const auto& [address, number] : {std::pair{"10.0.0.1", 1U},
                                          {"10.0.0.254", 254},
                                          {"10.0.0.255", 0},
                                          {"10.0.0.0", 0},
                                          {"10.0.7", 0},
                                          {"10.0.0.7.8", 0},
                                          {"10.0.0.", 0},
                                          {"10.0.0.x", 0},
                                          {"", 0}}) {
        EXPECT_EQ(GetViNum(address), number) << address;
    }
}

TEST(BoxReply, PointerIsScaledTowardsZero) {
    EXPECT_EQ(scaleTruncated(100, 1280.0F / 1920.0F), 66);
    EXPECT_EQ(scaleTruncated(-100, 1280.0F / 1920.0F), -66);
    EXPECT_EQ(scaleTruncated(2147483647, 9999.0F), 2147483647);
    EXPECT_EQ(scaleTruncated(-2147483647, 9999.0F), -2147483647 - 1);
}

class Query : public Board {
 protected:
    Query() {
        control(box);
        placePointer(960, 540);
        byTime.CreateUDPServer(0, 1, true, true);
        InputViSocket = &byTime;
    }

    /// What `query` of `target` prints when `from` answers with `reply`. The console waits only 20
    /// ms, so a late answer means another try.
    std::string asked(const std::function<void()>& query, const std::string& reply, Box& from,
                      Box& target) {
        std::string printed;
        for (int i = 0; i < 100 && printed.find(" ip") == std::string::npos; ++i) {
            requests.clear();
            reports.clear();
            std::atomic<bool> done{false};
            std::thread answering([&] {
                for (bool last = false; !last;) {
                    last = done;
                    for (std::string got; (got = target.text()) != "nothing";) {
                        if (got != "link") {
                            reports += hex(got);
                            continue;
                        }
                        requests += got;
                        from.answer(reply, target);
                    }
                    std::this_thread::yield();
                }
            });
            printed = printedBy(query);
            done = true;
            answering.join();
        }
        return printed;
    }
    std::string onSelection(const std::string& reply) {
        return asked([this] { events.getChipVersion(); }, reply, box, box);
    }
    std::string periodic(const std::string& reply) {
        return asked([this] { events.TimegetChipVersion(); }, reply, box, box);
    }
    std::string echo(const std::string& reply) const {
        return "socket read emput\nget ip:127.0.0.31 port:" + std::to_string(box.port) +
               " input echo:" + reply + "\n";
    }
    static std::string record(unsigned n) {
        const ViInfo info = vi_info.with([n](const auto& records) { return records[n]; });
        return std::string(info.address.view()) + " " + std::to_string(info.width) + "x" +
               std::to_string(info.height) + " rel " + std::to_string(info.relative);
    }
    static std::string picture() {
        return std::to_string(XRIGHT) + "x" + std::to_string(YDOWN) + " rel " +
               std::to_string(rel_enable);
    }

    Box box{"127.0.0.31"};
    UDPSocket byTime;
    std::string requests;  ///< of the last try
    std::string reports;   ///< likewise
};

TEST_F(Query, OnSelectionTakesTheWholeAnswer) {
    const std::string reply = "vi_w=1280&vi_h=720&kvm=abs";
    EXPECT_EQ(onSelection(reply), echo(reply) +
                                      "get vi w=1280,h=720 and cur x:960 y:540\n"
                                      "xpre=0.666667\nypre=0.666667\n"
                                      "save vi 127.0.0.31 (1280,720)\n"
                                      "save 127.0.0.31 vi rel :0\n"
                                      "end get input info\n");
    EXPECT_EQ(requests, "link");
    EXPECT_EQ(place(), "screen 0,0 cell 0,0 pointer 640,360");
    EXPECT_EQ(picture(), "1280x720 rel 0");
    EXPECT_EQ(record(31), "127.0.0.31 1280x720 rel 0");
    // Known already: nothing is scaled again. An overlong height starts from 1920x1080.
    EXPECT_EQ(onSelection("vi_w=1280&vi_h=720&"), echo("vi_w=1280&vi_h=720&") +
                                                      "get vi w=1280,h=720 and cur x:640 y:360\n"
                                                      "save vi 127.0.0.31 (1280,720)\n"
                                                      "end get input info\n");
    EXPECT_NE(onSelection("vi_w=960&vi_h=1080").find("xpre=0.500000\nypre=1.000000\n"),
              std::string::npos);
    onSelection("vi_w=800&");
    EXPECT_EQ(picture(), "800x0 rel 0") << "without a height it is 0";
}

TEST_F(Query, SwitchToRelativeSendsOneAbsoluteReport) {
    placePointer(10, 20);
    std::string printed = onSelection("vi_w=1920&vi_h=1080&kvm=rel");
    EXPECT_TRUE(
        printed.ends_with("this input chip relation\nsave 127.0.0.31 vi rel :1\n"
                          "end get input info\n"))
        << printed;
    EXPECT_EQ(place(), "screen 0,0 cell 0,0 pointer 15,25");
    EXPECT_EQ(record(31), "127.0.0.31 1920x1080 rel 1");
    EXPECT_EQ(reports, "57 ab 04 01 00 0f 00 19 00 00");
    onSelection("vi_w=1920&vi_h=1080&kvm=rel");
    EXPECT_EQ(reports, "") << "the mode is known";
    printed = onSelection("vi_w=1920&vi_h=1080&kvm=abs");
    EXPECT_NE(printed.find("this input chip abslation\n"), std::string::npos) << printed;
    EXPECT_EQ(picture(), "1920x1080 rel 0");
    EXPECT_EQ(place(), "screen 0,0 cell 0,0 pointer 15,25");
}

TEST_F(Query, ForeignAndUselessAnswersChangeNothing) {
    Box other{"127.0.0.32"};
    const std::string full = "vi_w=640&vi_h=480&kvm=rel";
    const std::string port = std::to_string(box.port);
    EXPECT_EQ(asked([this] { events.getChipVersion(); }, full, other, box),
              "socket read emput\nnow input ip 127.0.0.31 port " + port +
                  " get error Ip 127.0.0.32 port " + std::to_string(other.port) + "\n");
    EXPECT_EQ(asked([this] { events.TimegetChipVersion(); }, full, other, box),
              "socket read emput\nnow input ip 127.0.0.31 get error Ip 127.0.0.32\n");
    EXPECT_EQ(onSelection("vi_h=480&kvm=rel"), echo("vi_h=480&kvm=rel") + "end get input info\n");
    EXPECT_EQ(periodic("vi_h=480&kvm=rel"), echo("vi_h=480&kvm=rel"));
    onSelection("vi_w=0&vi_h=480");
    periodic("vi_w=-3&vi_h=480");
    EXPECT_EQ(printedBy([this] { events.getChipVersion(); }),
              "socket read emput\nend get input info\n")
        << "nobody answers";
    EXPECT_EQ(printedBy([this] { events.TimegetChipVersion(); }), "socket read emput\n");
    curIp.set(AddressText{AddressText::kNone});
    events.getChipVersion();
    EXPECT_EQ(picture(), "1920x1080 rel 0");
    EXPECT_EQ(record(31), " 0x0 rel 0");
    EXPECT_EQ(place(), "screen 0,0 cell 0,0 pointer 960,540");
}

TEST_F(Query, PeriodicOneWritesOnlyWhatChanged) {
    const std::string reply = "vi_w=960&vi_h=1080&kvm=abs";
    EXPECT_EQ(
        periodic(reply),
        echo(reply) + "xpre=0.500000\nypre=1.000000\nget vi w=960,h=1080 and cur x:480 y:540\n");
    EXPECT_EQ(periodic(reply), echo(reply));
    EXPECT_TRUE(periodic("vi_w=960&kvm=rel")
                    .ends_with("this input chip relation\nget 127.0.0.31 vi rel :1\n"));
    EXPECT_EQ(reports, "57 ab 04 01 00 e5 01 21 02 00");
    EXPECT_EQ(record(31), "127.0.0.31 960x1080 rel 1");
    EXPECT_EQ(place(), "screen 0,0 cell 0,0 pointer 485,545");
    XRIGHT = 1280;
    YDOWN = 720;
    EXPECT_EQ(periodic("vi_w=12800"),
              echo("vi_w=12800") + "get vi w=1280,h=720 and cur x:485 y:545\n")
        << "a long value resets nothing, a missing height is the old one";
    is_user_ip = 1;
    EXPECT_EQ(printedBy([this] { events.TimegetChipVersion(); }), "");
    EXPECT_EQ(picture(), "1280x720 rel 1");
}

TEST_F(Query, BoxWithoutARecordOfItsOwnUsesRecordZero) {
    Box last{"127.0.0.255"};
    control(last);
    const std::string printed =
        asked([this] { events.getChipVersion(); }, "vi_w=640&vi_h=480&kvm=rel", last, last);
    EXPECT_EQ(printed.find("save vi "), std::string::npos) << printed;
    EXPECT_NE(printed.find("save 127.0.0.255 vi rel :1\n"), std::string::npos) << printed;
    EXPECT_EQ(record(0), " 0x0 rel 1");
    EXPECT_EQ(picture(), "640x480 rel 1");
}

}  // namespace
