#include <benchmark/benchmark.h>
#include <linux/input-event-codes.h>

#include "input/key_rules.h"
#include "input/mouse_rules.h"

namespace {

/// Counts what the rules say.
class CountingSink : public Sink {
 public:
    std::size_t calls = 0;

    void toBox(const BoxReport& /*report*/) override { ++calls; }
    void toOsd(OsdPort /*port*/, std::span<const std::uint8_t> /*bytes*/) override { ++calls; }
    void command(const Command& /*command*/) override { ++calls; }
    void pause(std::int64_t /*microseconds*/) override {}

 protected:
    void print(const char* /*format*/, va_list /*arguments*/) override {}
};

struct World {
    ConsoleState console;
    Guarded<currentCtl> place;
    Guarded<HotkeyTable> hotkeys;
    RuleState state{console, place, hotkeys, true, true, true, true, {}, {}};
    CountingSink sink;

    World() {
        state.box.curIp.assign("10.0.0.31");
        console.duties.hotPlugFlag = 0;
    }
};

/// Presses and releases of a key, of a modifier and of both together: items are events.
void serveKeys(benchmark::State& state) {
    World world;
    KeyRules rules(world.state, world.sink);
    constexpr std::pair<int, int> kTyped[] = {{KEY_A, 1}, {KEY_A, 0}, {KEY_LEFTSHIFT, 1},
                                              {KEY_B, 1}, {KEY_B, 0}, {KEY_LEFTSHIFT, 0},
                                              {KEY_1, 1}, {KEY_1, 0}};
    for (auto _ : state) {
        for (const auto& [code, value] : kTyped) {
            rules.serve(
                {{0, 0, EV_KEY, static_cast<std::uint16_t>(code), value}, 0, "event0", 3, {}});
        }
    }
    state.SetItemsProcessed(state.iterations() * std::ssize(kTyped));
    state.counters["calls"] = static_cast<double>(world.sink.calls);
}
BENCHMARK(serveKeys);

/// Motion there and back, each with the end of its packet.
void serveMotion(benchmark::State& state) {
    World world;
    MouseRules rules(world.state, world.sink);
    for (auto _ : state) {
        for (const int by : {3, -3}) {
            rules.serve({0, 0, EV_REL, REL_X, by});
            rules.serve({0, 0, EV_SYN, SYN_REPORT, 0});
        }
    }
    state.SetItemsProcessed(state.iterations() * 4);
    state.counters["calls"] = static_cast<double>(world.sink.calls);
}
BENCHMARK(serveMotion);

}  // namespace
