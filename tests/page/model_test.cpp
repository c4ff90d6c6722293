#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include <nlohmann/json.hpp>

#include "page/message.h"
#include "page/model.h"
#include "page/place.h"
#include "page/recording.h"
#include "page/settings_view.h"
#include "remote/wire.h"
#include "words/message.h"

namespace {

using nlohmann::json;

TEST(PageMessage, IsReadOrRefusedWhole) {
    const auto key = page::parseSaid(R"({"t":"key","code":"KeyK","down":true})");
    ASSERT_TRUE(key);
    EXPECT_EQ(key->code, KEY_K);
    EXPECT_TRUE(key->isDown);
    EXPECT_EQ(page::parseSaid(R"({"t":"move","x":1e99,"y":-7})")->x, 0);
    EXPECT_EQ(page::parseSaid(R"({"t":"button","n":2})")->code, BTN_RIGHT);
    for (const char* wrong :
         {"", "[]", "{", R"({"t":"fly"})", R"({"t":"key","code":"KeyÄ"})",
          R"({"t":"key","code":"Key"})", R"({"t":7})", R"({"t":"button","n":-1})"}) {
        EXPECT_FALSE(page::parseSaid(wrong)) << wrong;
    }
}

TEST(PageMessage, KnowsTheKeysOfAKeyboard) {
    const std::pair<const char*, int> kCodes[] = {{"Digit0", KEY_0},
                                                  {"Minus", KEY_MINUS},
                                                  {"ShiftLeft", KEY_LEFTSHIFT},
                                                  {"Backquote", KEY_GRAVE},
                                                  {"F12", KEY_F12},
                                                  {"Numpad7", KEY_KP7},
                                                  {"NumpadEnter", KEY_KPENTER},
                                                  {"NumLock", KEY_NUMLOCK},
                                                  {"CapsLock", KEY_CAPSLOCK},
                                                  {"Space", KEY_SPACE},
                                                  {"PageUp", KEY_PAGEUP},
                                                  {"IntlBackslash", KEY_102ND},
                                                  {"Semicolon", KEY_SEMICOLON},
                                                  {"MetaRight", KEY_RIGHTMETA},
                                                  {"Escape", KEY_ESC}};
    for (const auto& [name, code] : kCodes) {
        EXPECT_EQ(page::keyOfCode(name).value_or(0), code) << name;
    }
}

template <class Bytes>
rig::Report reportOf(const Bytes& bytes, std::uint16_t port = 80) {
    rig::Report report;
    report.at.port = port;
    report.bytes.assign(bytes.begin(), bytes.end());
    report.text = words::describe(report.bytes);
    return report;
}

TEST(PageModel, ShowsOfABoxWhatItReceivedAndNothingElse) {
    page::Model model;
    model.setWall({"0,0,10.0.0.1#0,0,10.0.1.1#1,0,10.0.1.2-3"}, "10.0.0.1", {"10.0.1.2"});
    model.saw("box 10.0.1.1", reportOf(wire::lights(true, false)));
    model.saw("box 10.0.1.1", reportOf(wire::keyboard(0x02, 0x04)));
    model.saw("box 10.0.1.2", reportOf(wire::userPointer(1, 100, 200, 0), 2000));
    const json state = model.state(1);
    const json& first = state["boxes"]["10.0.1.1"];
    EXPECT_EQ(first["keys"], (json{"LEFTSHIFT", "A"}));
    EXPECT_EQ(first["typed"], "a") << "Shift and Caps Lock together";
    EXPECT_FALSE(first.contains("pointer"));
    const json& second = state["boxes"]["10.0.1.2"];
    EXPECT_EQ(second["pointer"], (json{100, 200}));
    EXPECT_EQ(second["mode"], "user list");
    EXPECT_EQ(second["clicks"], 1);
    EXPECT_EQ(state["control"], "10.0.1.2");
    EXPECT_EQ(state["seen"].size(), 3);
    EXPECT_EQ(model.state(3)["seen"].size(), 1) << "what a viewer has not seen yet";
    EXPECT_EQ(model.unfold(2)["fields"][1]["meaning"], "LEFTSHIFT");
    EXPECT_TRUE(model.unfold(99).is_null());
}

TEST(PageModel, FollowsControlByWhatIsNoRelease) {
    page::Model model;
    model.setWall({"0,0,10.0.0.1#0,0,10.0.1.1#1,0,10.0.1.2"}, "10.0.0.1", {});
    model.saw("box 10.0.1.1", reportOf(wire::absolute(0, 5, 5, 0)));
    model.saw("box 10.0.1.2", reportOf(wire::lights(false, false)));
    model.saw("box 10.0.1.1", reportOf(wire::kKeyRelease));
    model.saw("box 10.0.1.1", reportOf(wire::absolute(0, 1920, 0, 0)));
    EXPECT_EQ(model.inControl(), "10.0.1.2");
    model.saw("osd 41237", reportOf(std::string("TO:10.0.0.1,0,0"), 41237));
    EXPECT_EQ(model.inControl(), "10.0.1.1");
    model.sawLine("stop kvm");
    EXPECT_EQ(model.inControl(), "");
}

TEST(PagePlace, IsForItsOwnPagesAndForWhoKnowsTheToken) {
    page::Place place;
    EXPECT_TRUE(page::isMeant(place, "127.0.0.1:8088", ""));
    EXPECT_TRUE(page::isMeant(place, "localhost:8088", "http://localhost:8088"));
    EXPECT_FALSE(page::isMeant(place, "localhost:8088", "http://127.0.0.1:8088"));
    EXPECT_FALSE(page::isMeant(place, "127.0.0.1:8088", "null"));
    EXPECT_FALSE(page::isMeant(place, "example.net:8088", "http://example.net:8088"));
    EXPECT_TRUE(page::knowsToken(place, "/"));
    place.token = "abc";
    EXPECT_FALSE(page::isMeant(place, "localhost:8088", ""));
    EXPECT_TRUE(page::knowsToken(place, "/socket?abc"));
    for (const char* wrong : {"/", "/?", "/abc", "/?abcd", "/?x?abc", "/?ab"}) {
        EXPECT_FALSE(page::knowsToken(place, wrong)) << wrong;
    }
    for (const char* wrong : {"", "../x", "a/b", ".x", "%2e", "A"}) {
        EXPECT_FALSE(page::isFileName(wrong)) << wrong;
    }
}

TEST(PageWall, NeverReachesARealBoxWithoutANetworkOfItsOwn) {
    const std::string here = page::wallOfSize("2x2", "1x2");
    const page::SettingsPlan made = page::planOf(here, {"127.0.0.32", "127.0.0.99"}, false);
    EXPECT_EQ(made.problem, "");
    EXPECT_EQ(made.plan.wall.size(), 4);
    EXPECT_EQ(made.plan.users, (std::vector<std::string>{"127.0.0.32"}));
    std::string real = here;
    real.replace(real.find("127.0.0.33"), 10, "10.11.12.3");
    EXPECT_NE(page::planOf(real, {}, false).problem.find("not 10.11.12.3"), std::string::npos);
    EXPECT_EQ(page::planOf(real, {}, true).problem, "");
    EXPECT_NE(page::planOf("", {}, true).problem, "");
    for (const char* size : {"", "2", "0x1", "9x1", "2x2x", "2x", "-1x2"}) {
        EXPECT_EQ(page::wallOfSize(size, "1x1"), "") << size;
    }
    EXPECT_EQ(page::wallOfSize("8x8", "2x1"), "") << "too many boxes";
}

TEST(PageRecording, IsAScriptOfWhatWasDoneAndWhatCameOfIt) {
    using std::chrono::milliseconds;
    page::Recording recording;
    rig::Plan plan;
    plan.wall = {"0,0,127.0.0.1#0,0,127.0.0.31"};
    recording.begin(plan);
    const page::Recording::Clock::time_point start{milliseconds(5)};
    recording.came("box 127.0.0.31", "lights caps off num off");
    recording.did("KEY_A down", start);
    recording.did("SYN", start + milliseconds(1));
    recording.came("box 127.0.0.31", "key down A");
    recording.came("reply", "text");
    recording.did("KEY_A up", start + milliseconds(41));
    EXPECT_EQ(recording.script(),
              "# Recorded from the page.\nwall 0,0,127.0.0.1#0,0,127.0.0.31\nquick\n\n"
              "KEY_A down\nSYN\nbox 127.0.0.31  key down A\n+40ms\nKEY_A up\n");
}

}  // namespace
