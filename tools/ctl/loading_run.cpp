#include "ctl/loading_run.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "base/file_start.h"
#include "base/path_prefix.h"
#include "base/singleton.h"
#include "base/state.h"
#include "config/software_config.h"
#include "control/hotkey_table.h"
#include "control/loading.h"
#include "net/local_ip.h"
#include "silence.h"

namespace ctl {
namespace {

/// A directory that the daemon's rooms take for the machine's root, for as long as it lives.
class ScratchRoot {
 public:
    ScratchRoot() {
        std::string pattern = std::filesystem::temp_directory_path() / "tavrikctl-XXXXXX";
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::system_error(errno, std::generic_category(), pattern);
        }
        root_ = pattern;
        std::filesystem::create_directories(root_ / "data");
        setPathPrefix(root_);
    }
    ~ScratchRoot() {
        setPathPrefix("");
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }
    ScratchRoot(const ScratchRoot&) = delete;
    ScratchRoot& operator=(const ScratchRoot&) = delete;

 private:
    std::filesystem::path root_;
};

std::string settingsFile() {
    return readFileStart(prefixedPath(SoftwareConfig::kPath), kSettingsLimit + 1).text;
}

void write(std::string_view text) {
    std::ofstream file(prefixedPath(SoftwareConfig::kPath), std::ios::binary);
    file << text;
    if (!file.flush()) {
        throw std::system_error(errno, std::generic_category(), SoftwareConfig::kPath);
    }
}

/// The same that the daemon would say.
std::string refusalOf(std::string_view text) {
    if (!std::filesystem::exists(prefixedPath(SoftwareConfig::kPath) + ".refused")) {
        return "";
    }
    return text.find('\0') != text.npos ? "it holds a NUL byte" : "it is larger than 16 MiB";
}

}  // namespace

LoadingRun runLoading(std::string_view text, const std::string& console) {
    const tools::Silence silence;
    const ScratchRoot root;
    write(text);
    outInfo_.set({});
    hotkeyinfo_.set({});
    Singleton<SoftwareConfig>::init();
    const auto config = Singleton<SoftwareConfig>::instance();
    LoadingRun run;
    run.portTaken = loadSettings(*config);
    run.refusal = refusalOf(text);
    run.saved = settingsFile();
    if (run.refusal.empty()) {
        run.lost = lostLines(text, run.saved);
    }
    run.wall = makeWall(*config);
    run.findings = examine(run.wall, console);
    run.hotkeyProblem = loadHotkeys(*config);
    Singleton<SoftwareConfig>::end();
    return run;
}

std::string consoleAddress(std::string_view netIni) {
    const std::string address = localIpFromText(netIni);
    return address == localIpFromText("") ? "" : address;
}

}  // namespace ctl
