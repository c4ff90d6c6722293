#include <functional>
#include <thread>

#include "remote/source_query.h"
#include "unit/remote/board.h"

namespace {

TEST(BoxReply, ValuesAreReadAsFourCharacters) {
    using enum PointerMode;
    const auto shown = [](const std::optional<ReplyNumber>& number) {
        return number ? std::to_string(number->value) + (number->overlong ? "!" : "") : "-";
    };
    using Row = std::tuple<const char*, std::string, std::optional<PointerMode>>;
    for (const auto& [text, size, mode] :
         {Row{"vi_w=1920&vi_h=1080&kvm=abs", "1920x1080", kAbsolute},
          {"kvm=rel&x&vi_h=720&vi_w=1280", "1280!x720", kRelative},
          {"vi_w=19200&vi_h=1080", "1920!x1080!", {}},
          {"vi_w=800", "800x-", {}},
          {"vi_w=80x&vi_h=&kvm=", "80x-1", kUnchanged},
          {"kvm=relx&vi_h=1", "-x1", kUnchanged},
          {"kvm=re", "-x-", kUnchanged},
          {"", "-x-", {}}}) {
        const BoxReply reply = parseBoxReply(text);
        EXPECT_EQ(shown(reply.width) + "x" + shown(reply.height), size) << text;
        EXPECT_EQ(reply.mode, mode) << text;
    }
}

TEST(BoxReply, RecordIsChosenByTheLastOctet) {
    EXPECT_EQ(GetViNum("10.0.0.1"), 1U);
    EXPECT_EQ(GetViNum("10.0.0.254"), 254U);
    for (const char* none :
         {"10.0.0.255", "10.0.0.0", "10.0.7", "10.0.0.7.8", "10.0.0.", "10.0.0.x", ""}) {
        EXPECT_EQ(GetViNum(none), 0U) << none;
    }
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
            reports = requests = "";
            std::jthread answering([&](const std::stop_token& done) {
                for (bool last = false; !last;) {
                    last = done.stop_requested();
                    for (std::string got; (got = target.text()) != "nothing";) {
                        (got == "link" ? requests : reports) += got == "link" ? got : hex(got);
                        if (got == "link") {
                            from.answer(reply, target);
                        }
                    }
                    std::this_thread::yield();
                }
            });
            printed = printedBy(query);
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
        const std::string size = std::to_string(XRIGHT) + "x" + std::to_string(YDOWN);
        return size + " rel " + std::to_string(rel_enable);
    }

    Box box{"127.0.0.31"};
    UDPSocket byTime;
    std::string requests;  ///< of the last try
    std::string reports;   ///< likewise
};

TEST_F(Query, OnSelectionTakesTheWholeAnswer) {
    const std::string reply = "vi_w=1280&vi_h=720&kvm=rel";
    EXPECT_EQ(onSelection(reply), echo(reply) +
                                      "get vi w=1280,h=720 and cur x:960 y:540\n"
                                      "xpre=0.666667\nypre=0.666667\n"
                                      "save vi 127.0.0.31 (1280,720)\nthis input chip relation\n"
                                      "save 127.0.0.31 vi rel :1\nend get input info\n");
    EXPECT_EQ(requests, "link");
    EXPECT_EQ(reports, "57 ab 04 01 00 85 02 6d 01 00") << "the last one in absolute form";
    EXPECT_EQ(place(), "screen 0,0 cell 0,0 pointer 645,365");
    EXPECT_EQ(record(31), "127.0.0.31 1280x720 rel 1");
    onSelection(reply);
    EXPECT_EQ(reports, "") << "the mode is known";
    EXPECT_EQ(onSelection("vi_w=1280&vi_h=720&kvm=abs"),
              echo("vi_w=1280&vi_h=720&kvm=abs") +
                  "get vi w=1280,h=720 and cur x:645 y:365\nsave vi 127.0.0.31 (1280,720)\n"
                  "this input chip abslation\nsave 127.0.0.31 vi rel :0\nend get input info\n");
    EXPECT_EQ(picture(), "1280x720 rel 0");
    EXPECT_NE(onSelection("vi_w=960&vi_h=1080").find("xpre=0.500000\nypre=1.000000\n"),
              std::string::npos)
        << "an overlong height starts from 1920x1080";
    onSelection("vi_w=800&");
    EXPECT_EQ(picture(), "800x0 rel 0") << "without a height it is 0";
}

TEST_F(Query, ForeignAndUselessAnswersChangeNothing) {
    Box other{"127.0.0.32"};
    const auto byOther = [&](const std::function<void()>& query) {
        return asked(query, "vi_w=640&vi_h=480&kvm=rel", other, box);
    };
    EXPECT_EQ(byOther([this] { events.getChipVersion(); }),
              "socket read emput\nnow input ip 127.0.0.31 port " + std::to_string(box.port) +
                  " get error Ip 127.0.0.32 port " + std::to_string(other.port) + "\n");
    EXPECT_EQ(byOther([this] { events.TimegetChipVersion(); }),
              "socket read emput\nnow input ip 127.0.0.31 get error Ip 127.0.0.32\n");
    onSelection("vi_h=480&kvm=rel");
    periodic("vi_h=480&kvm=rel");
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
    asked([this] { events.getChipVersion(); }, "vi_w=640&vi_h=480&kvm=rel", last, last);
    EXPECT_EQ(record(0), " 0x0 rel 1");
    EXPECT_EQ(picture(), "640x480 rel 1");
}

}  // namespace
