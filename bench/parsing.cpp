#include <benchmark/benchmark.h>

#include <string>

#include "config/config_lines.h"
#include "input/key_table.h"
#include "remote/box_reply.h"
#include "remote/map_text.h"

namespace {

/// Settings with as many map lines as the table holds.
void loadSettings(benchmark::State& state) {
    std::string text;
    const auto lines = static_cast<unsigned>(state.range(0));
    for (unsigned index = 0; index < kFirstMapIndex + lines; ++index) {
        text += settingKey(index) + "0,0,192.168.1.20#0,0,192.168.1.31#1,0,192.168.1.32-2\n";
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(settingsIn(text));
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(loadSettings)->RangeMultiplier(4)->Range(16, 4089)->Complexity();

void findEveryKey(benchmark::State& state) {
    for (auto _ : state) {
        for (int code = 0; code <= kLastKeyCode + 1; ++code) {
            benchmark::DoNotOptimize(findKey(code));
        }
    }
}
BENCHMARK(findEveryKey);

void parseReply(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(parseBoxReply("vi_w=1920&vi_h=1080&kvm=abs"));
    }
}
BENCHMARK(parseReply);

void parseEntry(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(parseMapEntry("12,3,192.168.1.31-2,8080"));
    }
}
BENCHMARK(parseEntry);

}  // namespace
