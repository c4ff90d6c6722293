#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <optional>

#include "base/file_start.h"
#include "base/text.h"
#include "config/software_config.h"
#include "config/whole_file.h"
#include "ctl/check.h"
#include "ctl/loading_run.h"
#include "ctl/show.h"
#include "drawing/wall_drawing.h"
#include "remote/selection.h"
#include "silence.h"

namespace {

enum Status : int { kFine = 0, kMistakes = 1, kUsage = 2, kNothingThere = 3 };

struct Options {
    std::string file = SoftwareConfig::kPath;
    std::string console;
    std::string svg;
    bool isJson = false;
    bool fixes = false;
    bool isInPlace = false;
};

int failed(int status, const std::string& what) {
    std::fprintf(stderr, "tavrikctl: %s\n", what.c_str());
    return status;
}

/// The text of the file; nothing, with one line, when there is none that could be read.
std::optional<std::string> readSettings(const Options& options) {
    FileText file = readFileStart(options.file, kSettingsLimit + 1);
    switch (file.state) {
        case FileState::kRead:
            return std::move(file.text);
        case FileState::kMissing:
            failed(kNothingThere, options.file + ": there is no such file");
            break;
        case FileState::kNotRegular:
            failed(kNothingThere, options.file + ": is not a regular file");
            break;
        case FileState::kUnreadable:
            failed(kNothingThere, options.file + ": cannot be read");
            break;
    }
    return std::nullopt;
}

/// The address given, or that of net.ini beside the settings.
std::string consoleOf(const Options& options) {
    constexpr std::size_t kMost = 1U << 20;
    if (!options.console.empty()) {
        return options.console;
    }
    const auto beside = std::filesystem::path(options.file).parent_path() / "net.ini";
    return ctl::consoleAddress(readFileStart(beside, kMost).text);
}

int mend(const Options& options, const std::string& text) {
    const auto better = ctl::fixed(text, consoleOf(options));
    if (!better) {
        return failed(kMistakes, options.file + ": cannot be mended");
    }
    const std::string difference = ctl::difference(text, *better);
    std::fputs(difference.c_str(), stdout);
    if (!options.isInPlace || difference.empty()) {
        return kFine;
    }
    WholeFile file(options.file);
    const auto kept = file.keep(text);
    if (!kept || !file.replace(*better, 1)) {
        return failed(kMistakes, options.file + ": cannot be written: " +
                                     std::strerror(kept ? file.error() : errno));
    }
    std::printf("%s: mended; as it was it is %s%s\n", options.file.c_str(), options.file.c_str(),
                std::string(*kept).c_str());
    return kFine;
}

int runCheck(const Options& options) {
    const auto text = readSettings(options);
    if (!text) {
        return kNothingThere;
    }
    if (options.fixes) {
        return mend(options, *text);
    }
    const ctl::Checked checked = ctl::check(*text, consoleOf(options));
    const bool colours = isatty(STDOUT_FILENO) != 0 && std::getenv("NO_COLOR") == nullptr;
    const std::string shown = options.isJson ? ctl::asJson(checked, options.file)
                                             : ctl::asText(checked, options.file, colours);
    std::fputs(shown.c_str(), stdout);
    return checked.count(ctl::Severity::kError) == 0 ? kFine : kMistakes;
}

drawing::Wall toDraw(const outInf& wall, const std::string& console) {
    drawing::Wall drawn;
    for (const auto& [key, screen] : wall.screens) {
        drawing::Screen& one = drawn[{gridColumn(key), gridRow(key)}];
        one.name = withoutControls(screen.name.view());
        one.isHere = !console.empty() && screen.name.view().starts_with(console);
        for (const auto& [at, cell] : screen.cells) {
            const std::string name = withoutControls(cell.name.view());
            const tools::Silence silence;
            one.cells[{gridColumn(at), gridRow(at)}] = {
                name.substr(0, name.find('-')), static_cast<unsigned>(get_in_port(name.c_str()))};
        }
    }
    return drawn;
}

int runDraw(const Options& options) {
    const auto text = readSettings(options);
    if (!text) {
        return kNothingThere;
    }
    const std::string console = consoleOf(options);
    const drawing::Wall wall = toDraw(ctl::runLoading(*text, console).wall.wall, console);
    if (wall.empty()) {
        return failed(kMistakes, options.file + ": there is no wall in it");
    }
    const auto drawn = options.svg.empty() ? drawing::asText(wall) : drawing::asSvg(wall);
    if (!drawn) {
        return failed(kMistakes, options.file + ": the wall is too large for a drawing");
    }
    if (options.svg.empty()) {
        std::fputs(drawn->c_str(), stdout);
        return kFine;
    }
    WholeFile file(options.svg);
    return file.replace(*drawn, 1)
               ? kFine
               : failed(kMistakes,
                        options.svg + ": cannot be written: " + std::strerror(file.error()));
}

int run(int argc, char** argv) {
    CLI::App app("Settings of a tavrik console: checked, mended and drawn, without a console.");
    app.require_subcommand(1);
    app.set_version_flag("-V,--version", std::string("tavrikctl ") + TAVRIK_VERSION);
    Options options;
    const auto common = [&options](CLI::App& command) {
        command.add_option("FILE", options.file, "the settings; otherwise " + options.file);
        command
            .add_option("--console", options.console,
                        "this console's address; otherwise that of net.ini beside FILE")
            ->check(CLI::ValidIPV4);
        return &command;
    };
    const CLI::App* const check = [&] {
        auto* command = common(*app.add_subcommand(
            "check", "Tell every mistake. Status 0: none but warnings, 1: some, 3: no such file"));
        auto* json = command->add_flag("--json", options.isJson, "as JSON");
        auto* fix = command->add_flag("--fix", options.fixes, "show how it would be without any");
        command->add_flag("--in-place", options.isInPlace, "and write it so")->needs(fix);
        json->excludes(fix);
        return command;
    }();
    auto* const draw = common(*app.add_subcommand("draw", "Draw the wall"));
    draw->add_option("--svg", options.svg, "into this file, as a picture");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& problem) {
        return app.exit(problem) == 0 ? kFine : kUsage;
    }
    return check->parsed() ? runCheck(options) : runDraw(options);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& problem) {
        return failed(kMistakes, problem.what());
    }
}
