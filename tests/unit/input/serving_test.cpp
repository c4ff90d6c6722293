#include "input/serving.h"

#include <deque>
#include <random>

#include "remote/handover.h"
#include "unit/input/rule_world.h"

namespace {

using Time = std::int64_t;  ///< microseconds

TimeOfDay timeOfDayAt(Time time) { return {time / 1'000'000, time % 1'000'000}; }

struct Served : RuleWorld {
    Served() {
        handOver([](BoxInControl box) {
            box.curIp.assign("10.0.0.31");
            return std::optional(box);
        });
        panel().touchMaxX = panel().touchMaxY = 4096;
    }
    TouchPanel& panel() { return devices.panel; }
    void plug(std::uint32_t keyboards, std::uint32_t mice, std::uint32_t panels) {
        devices.keyDevices.count = keyboards;
        devices.mouseDevices.count = mice;
        devices.touchDevices.count = panels;
    }
    static void push(InputDeviceList& list, std::size_t slot, int type, int code, int value) {
        EXPECT_TRUE(list.queues[slot].push(
            {0, 0, static_cast<std::uint16_t>(type), static_cast<std::uint16_t>(code), value}, {}));
    }
    /// Gives the slot's queue what a pipe with `bytes` in it has, and perhaps its end.
    static void read(InputDeviceList& list, std::size_t slot, const std::string& bytes, bool ends) {
        int ways[2] = {-1, -1};
        ASSERT_EQ(pipe(ways), 0);
        ASSERT_EQ(write(ways[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
        if (ends) {
            close(ways[1]);
        }
        std::array<InputRecord, 16> scratch;
        list.queues[slot].fill({ways[0], RecordLayout::kPlain16}, scratch);
        close(ways[0]);
        if (!ends) {
            close(ways[1]);
        }
    }
    static std::string bytesOf(int type, int code = 0, int value = 0) {
        const InputRecord record{0, 0, static_cast<std::uint16_t>(type),
                                 static_cast<std::uint16_t>(code), value};
        return {reinterpret_cast<const char*>(&record), sizeof record};
    }

    DeviceCounts counts;
    Devices devices{counts};
    Serving serving{devices, state, sink};
};

TEST_F(Served, TheLookUpsIndexGoesOnAsTheKeyboards) {
    struct Row {
        const char* hotkeys;
        std::size_t presser;
        const char* left;  ///< which keyboards still have their second record after two passes
    };
    plug(3, 0, 0);
    for (const Row& row : {Row{"", 0, ""},                        // no match in 0: slot 1
                           Row{"LEFTCTRL+A", 0, ""},              // match at 0: slot 1
                           Row{"LEFTCTRL+B#LEFTCTRL+A", 0, "1"},  // match at 1: slot 2
                           Row{"LEFTCTRL+B#LEFTALT+A", 0, "12"},  // no match in 2: slot 3
                           Row{"LEFTCTRL+A", 2, ""}}) {           // back to 1, now empty
        Serving fresh(devices, state, sink);
        hotkeys.set(parseHotkeys(row.hotkeys, false).table);
        for (std::size_t slot = 0; slot < 3; ++slot) {
            const bool presses = slot == row.presser;
            push(devices.keyDevices, slot, presses ? EV_KEY : EV_SYN, KEY_LEFTCTRL, 1);
            push(devices.keyDevices, slot, presses ? EV_KEY : EV_SYN, KEY_A, 1);
        }
        fresh.pass();
        fresh.pass();
        std::string left;
        for (std::size_t slot = 0; slot < 3; ++slot) {
            left += devices.keyDevices.queues[slot].clear() > 0 ? std::to_string(slot) : "";
        }
        EXPECT_EQ(left, row.left) << row.hotkeys;
        state.keys.clear();
    }
}

TEST_F(Served, AFailureEndsItBehindWhatWasReadButNotAShortOneWhileTheOsdIsOpen) {
    const std::string whole = bytesOf(EV_SYN);
    const struct {
        InputDeviceList& list;
        std::string bytes;
        bool ends, osd, paused;
        int passes;  ///< before it ends; -1: it goes on
        const char* line;
    } rows[] = {
        {devices.mouseDevices, whole + "12345", false, false, false, 1,
         "read mouse input error--->0 len 5\n"},
        {devices.mouseDevices, "12345", false, true, false, -1, ""},
        {devices.mouseDevices, "", true, true, false, 0, "read mouse input error--->0 len 0\n"},
        {devices.keyDevices, "12345", false, true, false, 0,
         "read key error or in osd pause 0 len 5\n"},
        {devices.touchDevices, "12345", false, true, true, -1, ""},
        {devices.touchDevices, "", true, true, true, 0, "read touch error\n"},
        {devices.touchDevices, whole + whole, false, false, true, 0, "read touch error\n"},
        {devices.touchDevices, whole + whole, false, true, true, -1, ""},
    };
    for (const auto& row : rows) {
        plug(1, 1, 1);
        console.modes.osdFlag = row.osd;
        console.modes.touchPaused = row.paused;
        read(row.list, 0, row.bytes, row.ends);
        int passes = 0;
        while (serving.hasWork() && serving.pass()) {
            sink.takeLines();
            ++passes;
        }
        EXPECT_EQ(sink.takeLines(), row.line) << "row " << &row - rows;
        EXPECT_EQ(row.passes, *row.line == '\0' ? -1 : passes) << "row " << &row - rows;
        row.list.queues[0].clear();
    }
}

TEST_F(Served, WhatADeviceLostIsLetGoOfAndNothingElse) {
    plug(2, 1, 1);
    push(devices.keyDevices, 0, EV_KEY, KEY_LEFTSHIFT, 1);
    push(devices.keyDevices, 1, EV_KEY, KEY_B, 1);
    push(devices.mouseDevices, 0, EV_KEY, BTN_LEFT, 1);
    read(devices.keyDevices, 0, bytesOf(EV_SYN, SYN_DROPPED) + bytesOf(EV_KEY, KEY_A, 1), false);
    read(devices.mouseDevices, 0, bytesOf(EV_SYN, SYN_DROPPED), false);
    serving.pass();
    sink.take();
    sink.takeLines();
    serving.pass();
    EXPECT_EQ(sink.take(), "pointer 0 at 0,0 | keys 00+05");
    const std::string lines = sink.takeLines();
    EXPECT_NE(lines.find(" lost events, 1 of its keys let go\n"), lines.npos) << lines;
    EXPECT_FALSE(serving.hasWork()) << "what stood behind the marker went with it";
    push(devices.keyDevices, 0, EV_KEY, KEY_LEFTSHIFT, 0);
    push(devices.keyDevices, 1, EV_KEY, KEY_B, 0);
    serving.pass();
    EXPECT_EQ(sink.take(), "keys 00+05 | keys 00+00");
}

/// The OSD is opened by a command while a record is served: its release will go there.
TEST_F(Served, WhatWasPressedWhileTheOsdWasOpenedIsLetGoOf) {
    plug(1, 1, 0);
    sink.onCommand = [&] { console.modes.osdFlag = 1; };
    push(devices.keyDevices, 0, EV_KEY, KEY_LEFTCTRL, 1);
    push(devices.keyDevices, 0, EV_KEY, KEY_RIGHT, 1);
    serving.pass();
    console.modes.osdFlag = 0;
    sink.take();
    serving.pass();
    EXPECT_EQ(sink.take(), "arrow right | keys 01+4f | let go | pause 10");
    console.modes.osdFlag = 0;
    placePointer(1919, 0);
    push(devices.mouseDevices, 0, EV_REL, REL_X, 9);
    push(devices.mouseDevices, 0, EV_KEY, BTN_LEFT, 1);
    serving.pass();
    EXPECT_EQ(sink.take(), "cross right | let go");
    serving.pass();
    EXPECT_EQ(sink.take(), "") << "the button is the OSD's";
    console.modes.osdFlag = 0;
    console.modes.touchPaused = 1;
    console.duties.hotPlugFlag = 1;
    push(devices.mouseDevices, 0, EV_KEY, BTN_LEFT, 0);
    serving.pass();
    EXPECT_EQ(sink.take(), "resync") << "the pause is the pointer's alone";
}

/// Records of two keyboards, a mouse and a panel as they arrive, with more than a pause between
/// some of them and bursts between others.
struct Arrival {
    Time at;
    InputRecord record;
};
using Arrivals = std::array<std::deque<Arrival>, 4>;  ///< keyboard 0 and 1, mouse, panel
constexpr std::size_t kMouse = 2, kPanel = 3;

Arrivals randomArrivals(int count) {
    std::mt19937 random(11);
    const auto upTo = [&](unsigned limit) { return static_cast<int>(random() % limit); };
    constexpr int kKeys[] = {KEY_A,       KEY_ESC,  KEY_LEFTCTRL, KEY_LEFTALT, KEY_LEFTSHIFT,
                             KEY_NUMLOCK, KEY_LEFT, KEY_F13,      KEY_B,       KEY_CAPSLOCK};
    constexpr int kButtons[] = {BTN_LEFT, BTN_RIGHT, BTN_TOUCH};
    Arrivals arrivals;
    Time now = 0;
    for (int i = 0; i < count; ++i) {
        now += upTo(40) == 0 ? upTo(700'000) : upTo(4) * 300;
        const auto device = random() % arrivals.size();
        const bool syn = upTo(3) == 0;
        InputRecord record{static_cast<std::int32_t>(now / 1'000'000),
                           static_cast<std::int32_t>(now % 1'000'000), EV_SYN, 0, 0};
        if (!syn && device < kMouse) {
            record.type = EV_KEY;
            record.code = static_cast<std::uint16_t>(kKeys[upTo(std::size(kKeys))]);
            record.value = upTo(3);
        } else if (!syn && upTo(4) == 0) {
            record.type = EV_KEY;
            record.code = static_cast<std::uint16_t>(kButtons[upTo(std::size(kButtons))]);
            record.value = upTo(2);
        } else if (!syn) {
            record.type = device == kMouse ? EV_REL : EV_ABS;
            record.code = static_cast<std::uint16_t>(upTo(2));
            record.value = device == kMouse ? upTo(400) - 200 : upTo(4096);
        }
        arrivals[device].push_back({now, record});
    }
    return arrivals;
}

/// Its pauses pass the time, as a resync's do.
struct TimedSink : WrittenSink {
    using WrittenSink::WrittenSink;
    void pause(std::int64_t us) override { pass(us); }
    void command(const Command& command) override {
        WrittenSink::command(command);
        pass(command.order < Order::kCross ? 50'000 : 70'000);
    }
    void pass(Time us) {
        now += us;
        if (meanwhile) {
            meanwhile();
        }
    }
    Time now = 0;
    std::function<void()> meanwhile;
};

struct Console : RuleWorld {
    explicit Console(Arrivals all) : arrivals(std::move(all)) {
        hotkeys.set(parseHotkeys("LEFTCTRL+B#LEFTALT+A", false).table);
        devices.keyDevices.count = 2;
        devices.mouseDevices.count = devices.touchDevices.count = 1;
        devices.panel.touchMaxX = devices.panel.touchMaxY = 4096;
    }
    void TestBody() override {}
    /// Goes on to when something has arrived; false at the end.
    bool waitForRecords() {
        Time first = std::numeric_limits<Time>::max();
        for (const auto& device : arrivals) {
            first = device.empty() ? first : std::min(first, device.front().at);
        }
        timed.now = std::max(timed.now, first);
        return first != std::numeric_limits<Time>::max();
    }
    bool hasArrived(std::size_t device) const {
        return !arrivals[device].empty() && arrivals[device].front().at <= timed.now;
    }

    Arrivals arrivals;
    DeviceCounts counts;
    Devices devices{counts};
    TimedSink timed{state};
};

/// Every pause takes what has arrived into the queues.
std::string throughQueues(const Arrivals& arrivals) {
    Console console(arrivals);
    Serving serving(console.devices, console.state, console.timed);
    NodeQueue* const queues[] = {
        &console.devices.keyDevices.queues[0], &console.devices.keyDevices.queues[1],
        &console.devices.mouseDevices.queues[0], &console.devices.touchDevices.queues[0]};
    console.timed.meanwhile = [&] {
        for (std::size_t device = 0; device < std::size(queues); ++device) {
            for (auto& waiting = console.arrivals[device]; console.hasArrived(device);) {
                EXPECT_TRUE(
                    queues[device]->push(waiting.front().record, timeOfDayAt(waiting.front().at)));
                waiting.pop_front();
            }
        }
    };
    while (serving.hasWork() || console.waitForRecords()) {
        console.timed.pass(0);
        EXPECT_TRUE(serving.pass());
    }
    return console.timed.take();
}

/// One record of each ready device a pass, read when it is served.
std::string oneByOne(const Arrivals& arrivals) {
    Console console(arrivals);
    KeyRules keys(console.state, console.timed);
    MouseRules mouse(console.state, console.timed);
    TouchRules touch(console.state, console.timed, console.devices.panel);
    const auto take = [&](std::size_t device) {
        const Arrival next = console.arrivals[device].front();
        console.arrivals[device].pop_front();
        return next;
    };
    while (console.waitForRecords()) {
        std::array<bool, 4> ready{};
        for (std::size_t device = 0; device < ready.size(); ++device) {
            ready[device] = console.hasArrived(device);
        }
        console.state.box = boxInControl();
        if (ready[kMouse]) {
            const InputRecord record = take(kMouse).record;
            console.state.modes().areOff() ? mouse.serve(record) : mouse.serveForOsd(record);
        }
        for (std::size_t slot = 0; slot < 2;) {
            if (!ready[slot] || !console.hasArrived(slot)) {
                ++slot;
                continue;
            }
            const Arrival next = take(slot);
            slot = keys.serve({next.record, slot, "", 0, timeOfDayAt(next.at)}).value_or(slot + 1);
        }
        if (ready[kPanel]) {
            const InputRecord record = take(kPanel).record;
            if (console.state.modes().areOff()) {
                touch.serve(record);
            }
        }
    }
    return console.timed.take();
}

TEST_F(Served, QueuesChangeNothingOfWhatIsSaid) {
    const Arrivals arrivals = randomArrivals(100'000);
    const std::string queued = throughQueues(arrivals);
    const std::string plain = oneByOne(arrivals);
    const auto [at, other] =
        std::mismatch(queued.begin(), queued.end(), plain.begin(), plain.end());
    EXPECT_TRUE(at == queued.end() && other == plain.end())
        << "from " << at - queued.begin() << " on:\n"
        << std::string(at, queued.end()).substr(0, 200) << "\nexpected:\n"
        << std::string(other, plain.end()).substr(0, 200);
    EXPECT_GT(queued.size(), 500'000U);
}

}  // namespace
