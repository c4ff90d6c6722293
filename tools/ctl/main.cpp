#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <vector>

#include "base/file_start.h"
#include "ctl/commands.h"
#include "ctl/loading_run.h"

namespace ctl {

int failed(int status, const std::string& what) {
    std::fprintf(stderr, "tavrikctl: %s\n", what.c_str());
    return status;
}

std::optional<std::string> readFile(const std::string& path, std::size_t most) {
    FileText file = readFileStart(path, most);
    switch (file.state) {
        case FileState::kRead:
            return std::move(file.text);
        case FileState::kMissing:
            failed(kNothingThere, path + ": there is no such file");
            break;
        case FileState::kNotRegular:
            failed(kNothingThere, path + ": is not a regular file");
            break;
        case FileState::kUnreadable:
            failed(kNothingThere, path + ": cannot be read");
            break;
    }
    return std::nullopt;
}

std::string addressBeside(const std::string& settings) {
    constexpr std::size_t kMost = 1U << 20;
    const auto beside = std::filesystem::path(settings).parent_path() / "net.ini";
    return consoleAddress(readFileStart(beside, kMost).text);
}

}  // namespace ctl

namespace {

int run(int argc, char** argv) {
    CLI::App app(
        "Settings of a tavrik console checked, mended and drawn; commands sent, and datagrams told in "
        "words.");
    app.require_subcommand(1);
    app.set_version_flag("-V,--version", std::string("tavrikctl ") + TAVRIK_VERSION);
    const std::vector<ctl::Command> commands{ctl::addCheck(app),  ctl::addDraw(app),
                                             ctl::addSend(app),   ctl::addStatus(app),
                                             ctl::addDecode(app), ctl::addWatch(app)};
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& problem) {
        return app.exit(problem) == 0 ? ctl::kFine : ctl::kUsage;
    }
    for (const ctl::Command& command : commands) {
        if (command.chosen->parsed()) {
            return command.run();
        }
    }
    return ctl::kUsage;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& problem) {
        return ctl::failed(ctl::kMistakes, problem.what());
    }
}
