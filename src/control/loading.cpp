#include "control/loading.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "base/state.h"
#include "base/text.h"
#include "control/hotkey_table.h"
#include "net/udp_socket.h"
#include "remote/handover.h"
#include "remote/wall_map.h"

namespace {

/// The map lines up to the last one that is not empty.
std::vector<std::string> mapLines(const SoftwareConfig& config) {
    unsigned end = kSettingCount;
    while (end > kFirstMapIndex && config.GetConfig(end - 1).empty()) {
        --end;
    }
    std::vector<std::string> lines;
    lines.reserve(end - kFirstMapIndex);
    for (unsigned index = kFirstMapIndex; index < end; ++index) {
        lines.push_back(config.GetConfig(index));
    }
    return lines;
}

}  // namespace

bool loadSettings(SoftwareConfig& config) {
    config.ReadConfig();
    config.PrintConfig();
    const std::string lost = config.keepFile(config.lostByASave());
    config.SaveConfig();
    printUnlessEmpty(lost);
    const std::string text = config.GetConfig(kServerPortIndex);
    const long port = std::strtol(text.c_str(), nullptr, 10);
    if (port < 0 || port > kMaxPort) {
        std::printf("no UDP port in kUdpServerPort=%s\n", text.c_str());
        setInputPort(kDefaultInputPort);
        return false;
    }
    setInputPort(static_cast<std::int32_t>(port));
    return true;
}

LoadedWall makeWall(const SoftwareConfig& config) {
    const std::int32_t count = settingNumber(config.GetConfig(kOutNumIndex));
    LoadedWall loaded{mapLines(config), count != 0, {}};
    std::printf("out number-->%d\n", count);
    for (const std::string& line : loaded.lines) {
        if (line.empty() || !loaded.isUsed) {
            break;
        }
        std::printf("result-->%s\n", line.c_str());
        CreatOutIpMap(line);
        startFlag = 0;
    }
    loaded.wall = outInfo_.copy();
    return loaded;
}

std::string loadHotkeys(const SoftwareConfig& config) {
    std::string text = config.GetConfig(kHotkeyMapIndex);
    createHotKey(text, false);
    return parseHotkeys(text, false).problem;
}
