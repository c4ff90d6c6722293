#include "remote/picture.h"

#include <map>
#include <vector>

#include "remote/box_reply.h"
#include "remote/selection.h"
#include "unit/remote/between.h"
#include "unit/remote/remote_state.h"

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
    for (const auto& [address, number] : {std::pair{"10.0.0.1", 1U},
                                          {"10.0.0.254", 254U},
                                          {"10.0.0.255", 0U},
                                          {"10.0.7", 0U},
                                          {"10.0.0.7.8", 0U},
                                          {"10.0.0.x", 0U},
                                          {"", 0U}}) {
        EXPECT_EQ(GetViNum(address), number) << address;
    }
}

constexpr const char* kLink = "6c 69 6e 6b";

class Query : public RemoteState {
 protected:
    Query() {
        control(box);
        placePointer(960, 540);
        byTime.CreateUDPServer(0, 1, true, true);
        InputViSocket = &byTime;
    }
    ~Query() override { beforeSend = nullptr; }

    /// Gives control to a box of which nothing is known.
    static void begin(const Receiver& receiver) {
        control(receiver);
        change([](BoxInControl& now) {
            now.rel_enable = false;
            now.XRIGHT = kDefaultWidth, now.YDOWN = kDefaultHeight;
        });
    }
    /// What `query` prints when `from` answers with `reply`, and what happens `meanwhile`.
    std::string asked(
        void (*query)(), const std::string& reply, const Receiver& from,
        const std::function<void()>& meanwhile = [] {}) const {
        beforeSend = [&](int fd, std::string_view sent) {
            if (sent == "link") {
                from.answer(reply, portOf(fd));
                meanwhile();
            }
        };
        std::string printed = printedBy(query);
        beforeSend = nullptr;
        return printed;
    }
    std::string onSelection(const std::string& reply) const {
        return asked(getChipVersion, reply, box);
    }
    std::string periodic(const std::string& reply) const {
        return asked(TimegetChipVersion, reply, box);
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

    Receiver box{"127.0.0.31"};
    UDPSocket byTime;
};

TEST_F(Query, OnSelectionTakesTheWholeAnswer) {
    const std::string reply = "vi_w=1280&vi_h=720&kvm=rel";
    EXPECT_EQ(onSelection(reply), echo(reply) +
                                      "get vi w=1280,h=720 and cur x:960 y:540\n"
                                      "xpre=0.666667\nypre=0.666667\n"
                                      "save vi 127.0.0.31 (1280,720)\nthis input chip relation\n"
                                      "save 127.0.0.31 vi rel :1\nend get input info\n");
    EXPECT_EQ(box.all(), kLink + std::string(" | 57 ab 04 01 00 85 02 6d 01 00"))
        << "the last one in absolute form";
    EXPECT_EQ(place(), "screen 0,0 cell 0,0 pointer 645,365");
    EXPECT_EQ(record(31), "127.0.0.31 1280x720 rel 1");
    onSelection(reply);
    EXPECT_EQ(box.all(), kLink) << "the mode is known";
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

TEST_F(Query, ForeignStaleAndUselessAnswersChangeNothing) {
    Receiver other{"127.0.0.32"};
    const std::string whole = "vi_w=640&vi_h=480&kvm=rel";
    EXPECT_EQ(asked(getChipVersion, whole, other),
              "socket read emput\nnow input ip 127.0.0.31 port " + std::to_string(box.port) +
                  " get error Ip 127.0.0.32 port " + std::to_string(other.port) + "\n");
    EXPECT_EQ(asked(TimegetChipVersion, whole, other),
              "socket read emput\nnow input ip 127.0.0.31 get error Ip 127.0.0.32\n");
    onSelection("vi_h=480&kvm=rel");
    periodic("vi_h=480&kvm=rel");
    onSelection("vi_w=0&vi_h=480");
    periodic("vi_w=-3&vi_h=480");
    const auto awayAndBack = [&] { control(other), control(box); };
    EXPECT_EQ(asked(getChipVersion, whole, box, awayAndBack), echo(whole) + "end get input info\n");
    EXPECT_EQ(asked(TimegetChipVersion, whole, box, awayAndBack), echo(whole));
    EXPECT_EQ(printedBy(getChipVersion), "socket read emput\nend get input info\n")
        << "nobody answers";
    EXPECT_EQ(printedBy(TimegetChipVersion), "socket read emput\n");
    stopControl();
    printedBy(getChipVersion);
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
    box.all();
    EXPECT_TRUE(periodic("vi_w=960&kvm=rel")
                    .ends_with("this input chip relation\nget 127.0.0.31 vi rel :1\n"));
    EXPECT_EQ(box.all(), kLink + std::string(" | 57 ab 04 01 00 e5 01 21 02 00"));
    EXPECT_EQ(record(31), "127.0.0.31 960x1080 rel 1");
    change([](BoxInControl& now) { now.XRIGHT = 1280, now.YDOWN = 720; });
    EXPECT_EQ(periodic("vi_w=12800"),
              echo("vi_w=12800") + "get vi w=1280,h=720 and cur x:485 y:545\n")
        << "a long value resets nothing, a missing height is the old one";
    change([](BoxInControl& now) { now.is_user_ip = true; });
    EXPECT_EQ(printedBy(TimegetChipVersion), "");
    EXPECT_EQ(picture(), "1280x720 rel 1");
}

TEST_F(Query, AnAnswerChangesOnlyItsOwnBoxesRecord) {
    const ViInfo others{0, AddressText{"10.0.0.31"}, 640, 480};
    for (const auto query : {getChipVersion, TimegetChipVersion}) {
        vi_info.with([&](auto& records) { records[31] = others; });
        asked(query, "vi_w=0&vi_h=0&kvm=rel", box);
        EXPECT_EQ(record(31), "10.0.0.31 640x480 rel 0") << "a size that no picture has";
        EXPECT_TRUE(picture().ends_with("rel 1")) << "the mode counts all the same";
        asked(query, "vi_w=800&vi_h=600&kvm=rel", box);
        EXPECT_EQ(record(31), "127.0.0.31 800x600 rel 1");
    }
    Receiver last{"127.0.0.255"};
    control(last);
    asked(getChipVersion, "vi_w=640&vi_h=480&kvm=rel", last);
    EXPECT_EQ(record(0), " 0x0 rel 1") << "without a record of its own";
    EXPECT_EQ(picture(), "640x480 rel 1");
}

/// At every step of a query: what the box answers is nothing to the one that has got control.
TEST_F(Query, AnAnswerIsNothingToTheNextBox) {
    Receiver next{"127.0.0.32"};
    int steps = 0;
    for (const auto query : {getChipVersion, TimegetChipVersion}) {
        for (int moment = 0;; ++moment, ++steps) {
            begin(box);
            const auto ask = [&] { asked(query, "vi_w=640&vi_h=480&kvm=rel", box); };
            if (!interrupted(moment, ask, [&] { begin(next); })) {
                break;
            }
            EXPECT_EQ(picture(), "1920x1080 rel 0") << "step " << moment;
            EXPECT_EQ(next.all().find("57 ab"), std::string::npos) << "at most asked";
        }
    }
    EXPECT_GT(steps, 15);
}

/// Two threads' answers to one question, the one in between at every step of the other.
TEST_F(Query, TwoAnswersTogetherCountOnce) {
    beforeSend = [&](int fd, std::string_view sent) {
        if (sent == "link") {
            box.answer("vi_w=960&vi_h=540&kvm=rel", portOf(fd));
        }
    };
    const auto outcome = [&] {
        const std::string all = box.all();
        const std::size_t report = all.find("57 ab");
        const bool one = report != all.npos && all.find("57 ab", report + 1) == all.npos;
        return place().substr(place().find("pointer")) + ", " + picture() + ", known " +
               record(31) + (one ? "" : ", reports " + all);
    };
    std::map<std::string, std::vector<int>> outcomes;
    printedBy([&] {
        for (const auto& [first, second] : {std::pair{&getChipVersion, &TimegetChipVersion},
                                            {&TimegetChipVersion, &getChipVersion}}) {
            bool more = true;
            for (int moment = 0; more; ++moment) {
                begin(box);
                placePointer(960, 540);
                vi_info.set({});
                box.all();
                more = interrupted(moment, first, second);
                outcomes[outcome()].push_back(moment);
            }
        }
    });
    EXPECT_EQ(outcomes.size(), 1U) << testing::PrintToString(outcomes);
    EXPECT_EQ(outcomes.begin()->first,
              "pointer 485,275, 960x540 rel 1, known 127.0.0.31 960x540 rel 1");
    EXPECT_GT(outcomes.begin()->second.size(), 20U) << "there are steps";
}

}  // namespace
