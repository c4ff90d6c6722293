#include "remote/handover.h"

#include <cerrno>
#include <chrono>
#include <future>
#include <thread>

#include "remote/box_change.h"
#include "remote/edge_crossing.h"
#include "remote/lights.h"
#include "remote/reports.h"
#include "remote/selection.h"
#include "unit/remote/between.h"
#include "unit/remote/remote_state.h"

namespace {

constexpr const char* kParked = "57 ab 04 01 00 80 07 00 00 00";
constexpr const char* kUserKeysUp = "4b 00 01 08 00 00 00 00 00 00 00 00";
constexpr const char* kLink = "6c 69 6e 6b";
constexpr const char* kAnother = "127.0.0.99";

const BoxReport kKeyA = BoxReport::keys(wire::keyboard(0, 0x04));
const BoxReport kButton = BoxReport::pointer(wire::absolute(wire::kLeft, 0, 0, 1));

/// One way in which something is down, with the pointer at 300,200 and the wheel turned.
struct Form {
    const char* name;
    const BoxReport& pressed;
    bool relative, user;
    const char* release;
};
const Form kForms[] = {
    {"keys", kKeyA, false, false, kKeysUp},
    {"absolute", kButton, false, false, "57 ab 04 01 00 2c 01 c8 00 00"},
    {"relative", kButton, true, false, "57 ab 02 00 00 00 00"},
    {"user keys", kKeyA, false, true, kUserKeysUp},
    {"user pointer", kButton, false, true, "4b 00 02 07 00 b8 0b 10 0e 00 00"},
};

std::string joined(std::initializer_list<std::string> datagrams) {
    std::string list;
    for (const std::string& datagram : datagrams) {
        list += (list.empty() || datagram.empty() ? "" : " | ") + datagram;
    }
    return list;
}

class Handover : public RemoteState {
 protected:
    ~Handover() override { beforeSend = nullptr; }

    /// The wall's first cell has control: the old box, or the user-list box.
    void begin(bool user = false, bool relative = false) {
        user_ip.clear();
        listAsUserBox(userBox.ip);
        buildWall(
            {"0,0,10.0.0.1#0,0," + (user ? userBox.ip : oldBox.name()) + "#1,0," + newBox.name(),
             "1,0,10.0.0.2#0,0," + newBox.name()},
            "10.0.0.1");
        placePointer(300, 200);
        select();
        change([=](BoxInControl& box) { box.rel_enable = relative; });
        console.motion.remoteDx = 5;
    }
    static void select() {
        printedBy([] { GetCurInip(kCellInUse, nullptr); });
    }
    void press(const BoxReport& report) { sendReport(report, console.motion); }
    /// The first `beforeSend` of `bytes` is `run`.
    static void holdUp(const std::string& bytes, const std::function<void()>& run) {
        beforeSend = [=, left = 1](int, std::string_view sent) mutable {
            if (hex(sent) == bytes && left-- == 1) {
                run();
            }
        };
    }

    Receiver oldBox{"127.0.0.31"};
    Receiver newBox{"127.0.0.32"};
    Receiver userBox{ownAddress(), wire::kUserPort};
};

TEST_F(Handover, WhoeverTakesControlLetsGoOnceInTheOldBoxesForm) {
    struct Taker {
        const char* name;
        std::function<void()> take;
        bool releasesFirst = false;  ///< with releaseInput, which counts
        bool toNewBox = false;
    };
    const Taker takers[] = {
        {"edge", [&] { cross(console, Direction::kRight); }, true, true},
        {"arrow", [&] { crossByArrow(console, Direction::kRight); }, true, true},
        {"MTO", [&] { MouseTo(console, 1, 0); }, true, true},
        {"a cell selected", [] { placeCell(1, 0), GetCurInip(kCellInUse, nullptr); }, false, true},
        {"a cell that is not there", [] { placeCell(7, 7), GetCurInip(kCellInUse, nullptr); }},
        {"stop", [] { stopControl(); }},
        {"another port", [] { setInputPort(81); }},
        {"the loss of devices", [] { letGoOfEverything(); }}};
    for (const Taker& taker : takers) {
        for (const Form& form : kForms) {
            SCOPED_TRACE(std::string(taker.name) + ", " + form.name);
            begin(form.user, form.relative);
            const Receiver& box = form.user ? userBox : oldBox;
            press(form.pressed);
            EXPECT_NE(box.all(), "");
            EXPECT_EQ(newBox.all(), "");
            printedBy(taker.take);
            std::string expected = form.release;
            if (taker.releasesFirst) {
                const bool counted = form.user ? expected == kUserKeysUp : form.relative == false;
                expected = joined({form.user ? kUserKeysUp : joined({kParked, kKeysUp}),
                                   counted ? "" : form.release});
            }
            EXPECT_EQ(box.all(), expected);
            EXPECT_EQ(newBox.all(), taker.releasesFirst ? kLink : "");
            EXPECT_EQ(boxInControl().curIp == AddressText{newBox.ip}, taker.toNewBox);
            stopControl();
            EXPECT_EQ(box.all(), "") << "once";
            EXPECT_EQ(newBox.all(), "");
        }
    }
}

TEST_F(Handover, AReleaseThatCannotLeaveIsSentAgainUnlessItsBoxWasToldAnew) {
    for (const bool toldAnew : {false, true}) {
        for (const Form& form : kForms) {
            SCOPED_TRACE(std::string(form.name) + (toldAnew ? ", told anew" : ""));
            begin(form.user, form.relative);
            const Receiver& box = form.user ? userBox : oldBox;
            press(form.pressed);
            EXPECT_NE(box.all(), "");
            sendError = ENOBUFS;
            printedBy([] { stopControl(), sendWhatIsOwed(); });
            sendError = 0;
            EXPECT_EQ(box.all(), "");
            if (toldAnew) {
                begin(form.user, form.relative);
                press(form.pressed);
                EXPECT_NE(box.all(), "");
            }
            sendWhatIsOwed();
            EXPECT_EQ(box.all(), toldAnew ? "" : form.release);
            sendWhatIsOwed();
            EXPECT_EQ(box.all(), "");
        }
    }
}

TEST_F(Handover, AnotherAddressFormOrPortIsAnotherBox) {
    const BoxInControl box = boxInControl();
    EXPECT_TRUE(box.isSameBox(box));
    const std::function<void(BoxInControl&)> changes[] = {
        [](BoxInControl& other) { other.curIp = AddressText{"10.0.0.99"}; },
        [](BoxInControl& other) { other.is_user_ip = !other.is_user_ip; },
        [](BoxInControl& other) { ++other.inputPort; },
        [](BoxInControl& other) { ++other.port_add; }};
    for (const auto& change : changes) {
        BoxInControl other = box;
        change(other);
        EXPECT_FALSE(box.isSameBox(other));
    }
}

TEST_F(Handover, EveryFormInWhichSomethingIsDownAndNoOther) {
    begin();
    press(kKeyA);
    press(kButton);
    change([](BoxInControl&) {});
    EXPECT_TRUE(oldBox.all().ends_with(joined({"", kForms[0].release, kForms[1].release})));
    begin();
    press(kKeyA);
    oldBox.all();
    press(BoxReport::keys(wire::kKeyRelease, BoxReport::Kind::kKeysAtBasePort));
    change([](BoxInControl&) {});
    EXPECT_EQ(oldBox.all(), kKeysUp) << "a release elsewhere is none";
    press(kKeyA);
    press(BoxReport::keys(wire::kKeyRelease));
    press(kButton);
    releaseInput(nullptr);
    oldBox.all();
    stopControl();
    EXPECT_EQ(oldBox.all(), "") << "all is up";
}

TEST_F(Handover, TheSameBoxAtTheSamePortGoesOn) {
    begin();
    press(kKeyA);
    oldBox.all();
    const std::uint64_t serial = boxInControl().serial;
    for (const auto& again :
         {std::function<void()>(select), {[] { setInputPort(80); }}, {[] { forgetName(); }}, {[] {
              setOutIp(AddressText{"10.0.0.9"});
          }}}) {
        again();
        EXPECT_EQ(oldBox.all(), "");
    }
    EXPECT_EQ(boxInControl().serial, serial);
    EXPECT_EQ(boxInControl().curName, AddressText{});
    EXPECT_EQ(boxInControl().curOutIp, AddressText{"10.0.0.9"});
    MouseTo(console, 0, 9);  // off the wall
    EXPECT_EQ(oldBox.all(), joined({kParked, kKeysUp}));
    stopControl();
    EXPECT_EQ(oldBox.all(), "");
}

/// The process that ends is another one: its end cannot be taken back.
TEST_F(Handover, TheEndWaitsForTheSenderAndGivesControlToNobody) {
    const std::string keyDown = hex(wire::keyboard(0, 0x04));
    begin();
    const auto ends = [&] {
        std::promise<void> sending;
        holdUp(keyDown, [&] {
            EXPECT_FALSE(nobodyIsSending());
            sending.set_value();
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        });
        std::jthread sender([&] { press(kKeyA); });
        sending.get_future().wait();
        endControl(60'000'000);
        const bool waited = nobodyIsSending();
        sender.join();
        control(newBox);
        press(kKeyA);
        _exit(waited && boxInControl().isNone() ? 0 : 1);
    };
    EXPECT_EXIT(ends(), testing::ExitedWithCode(0), "");
    EXPECT_EQ(oldBox.all(), joined({kKeysUp, keyDown, kKeysUp}));
    EXPECT_EQ(newBox.all(), "");
}

TEST_F(Handover, AResyncLeavesADutyThatCameMeanwhile) {
    const std::tuple<const char*, std::function<void()>, int> rows[] = {
        {"nothing", [] {}, 0},
        {"a new duty", [&] { console.duties.hotPlugFlag = 1; }, 1},
        {"control moves on", [] { placeCell(1, 0), GetCurInip(kCellInUse, nullptr); }, 1}};
    for (const auto& [name, meanwhile, due] : rows) {
        begin();
        console.duties.hotPlugFlag = 1;
        console.duties.queryInProgress = 1;
        holdUp(kLink, [&, run = meanwhile] {
            EXPECT_EQ(console.duties.queryInProgress, 0);
            run();
        });
        printedBy([&] { resync(console); });
        beforeSend = nullptr;
        EXPECT_EQ(console.duties.hotPlugFlag, due) << name;
        EXPECT_EQ(console.duties.queryInProgress, 1);
        EXPECT_EQ(oldBox.all(), kLink) << "the box that had control was asked";
    }
    const BoxInControl box = boxInControl();
    console.duties.hotPlugFlag = 1;
    EXPECT_TRUE(resyncIsDue(console, box));
    for (Flag* mode :
         {&console.modes.osdFlag, &console.modes.previewMode, &console.modes.kvmMode}) {
        *mode = 1;
        EXPECT_FALSE(resyncIsDue(console, box));
        *mode = 0;
    }
    BoxInControl listed = box;
    listed.is_user_ip = true;
    EXPECT_FALSE(resyncIsDue(console, listed));
}

}  // namespace
