#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

#include "base/state.h"
#include "config/config_lines.h"
#include "config/software_config.h"
#include "input/key_table.h"
#include "remote/box_reply.h"
#include "remote/map_text.h"
#include "remote/wall_map.h"
#include "silence.h"

namespace {

constexpr auto kFirstMap = static_cast<std::int64_t>(kFirstMapIndex);

/// The n-th map line of a wall.
std::string mapLine(std::int64_t n) {
    return std::to_string(n % 128) + "," + std::to_string(n / 128) +
           ",192.168.1.20#0,0,192.168.1.31#1,0,192.168.1.32-2";
}

/// Settings of 16 to 4,089 map lines, as many as the table holds.
void loadSettings(benchmark::State& state) {
    std::string text;
    for (std::int64_t line = -kFirstMap; line < state.range(0); ++line) {
        text += settingKey(static_cast<unsigned>(kFirstMap + line)) + mapLine(line) + "\n";
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(settingsIn(text));
    }
}

/// With its flush to the disk.
void saveSettings(benchmark::State& state) {
    const tools::Silence silence;  // the table is on standard output
    const std::string path = std::filesystem::temp_directory_path() / "tavrik-bench.ini";
    SoftwareConfig config(path);
    for (std::int64_t line = 0; line < state.range(0); ++line) {
        config.SetConfig(static_cast<unsigned>(kFirstMap + line), mapLine(line));
    }
    int number = 0;
    for (auto _ : state) {
        config.SetConfig(0, ++number);
        if (!config.SaveConfig()) {
            state.SkipWithError("cannot save");
            break;
        }
    }
    std::filesystem::remove(path);
}

void loadWall(benchmark::State& state) {
    const tools::Silence silence;  // the table is on standard output
    for (auto _ : state) {
        outInfo_.set({});
        for (std::int64_t line = 0; line < state.range(0); ++line) {
            CreatOutIpMap(mapLine(line));
        }
    }
}

BENCHMARK(loadSettings)->Arg(16)->Arg(256)->Arg(4089);
BENCHMARK(saveSettings)->Arg(16)->Arg(256)->Arg(4089)->UseRealTime();
BENCHMARK(loadWall)->Arg(16)->Arg(256)->Arg(4089);

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
