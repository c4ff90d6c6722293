// check and draw: what reads settings.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "config/software_config.h"
#include "config/whole_file.h"
#include "ctl/check.h"
#include "ctl/commands.h"
#include "ctl/loading_run.h"
#include "ctl/show.h"
#include "ctl/wall_to_draw.h"
#include "drawing/wall_drawing.h"

namespace ctl {
namespace {

struct Options {
    std::string file = SoftwareConfig::kPath;
    std::string console;
    std::string svg;
    bool isJson = false;
    bool fixes = false;
    bool isInPlace = false;
};

/// The address given, or that of net.ini beside the settings.
std::string consoleOf(const Options& options) {
    return options.console.empty() ? addressBeside(options.file) : options.console;
}

int mend(const Options& options, const std::string& text) {
    const auto better = fixed(text, consoleOf(options));
    if (!better) {
        return failed(kMistakes, options.file + ": cannot be mended");
    }
    const std::string changes = difference(text, *better);
    std::fputs(changes.c_str(), stdout);
    if (!options.isInPlace || changes.empty()) {
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
    const auto text = readFile(options.file, kSettingsLimit + 1);
    if (!text) {
        return kNothingThere;
    }
    if (options.fixes) {
        return mend(options, *text);
    }
    const Checked checked = check(*text, consoleOf(options));
    const bool colours = isatty(STDOUT_FILENO) != 0 && std::getenv("NO_COLOR") == nullptr;
    const std::string shown =
        options.isJson ? asJson(checked, options.file) : asText(checked, options.file, colours);
    std::fputs(shown.c_str(), stdout);
    return checked.count(Severity::kError) == 0 ? kFine : kMistakes;
}

int runDraw(const Options& options) {
    const auto text = readFile(options.file, kSettingsLimit + 1);
    if (!text) {
        return kNothingThere;
    }
    const std::string console = consoleOf(options);
    const drawing::Wall wall = wallToDraw(runLoading(*text, console).wall.wall, console);
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

void addCommon(CLI::App& command, Options& options) {
    command.add_option("FILE", options.file, "the settings; otherwise " + options.file);
    command
        .add_option("--console", options.console,
                    "this console's address; otherwise that of net.ini beside FILE")
        ->check(CLI::ValidIPV4);
}

}  // namespace

Command addCheck(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand(
        "check", "Tell every mistake. Status 0: none but warnings, 1: some, 3: no such file");
    addCommon(*command, *options);
    auto* json = command->add_flag("--json", options->isJson, "as JSON");
    auto* fix = command->add_flag("--fix", options->fixes, "show how it would be without any");
    command->add_flag("--in-place", options->isInPlace, "and write it so")->needs(fix);
    json->excludes(fix);
    command->footer("Example:\n  tavrikctl check tav_rik.ini && scp tav_rik.ini root@BOARD:/data/");
    return {command, [options] { return runCheck(*options); }};
}

Command addDraw(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand("draw", "Draw the wall");
    addCommon(*command, *options);
    command->add_option("--svg", options->svg, "into this file, as a picture");
    command->footer("Example:\n  tavrikctl draw --svg wall.svg tav_rik.ini");
    return {command, [options] { return runDraw(*options); }};
}

}  // namespace ctl
