#pragma once

#include <functional>
#include <optional>
#include <string>

namespace CLI {
class App;
}

/// The subcommands of tavrikctl. Each adds itself to `app` and returns what runs it; the status is
/// the program's.
namespace ctl {

enum Status : int { kFine = 0, kMistakes = 1, kUsage = 2, kNothingThere = 3 };

struct Command {
    CLI::App* chosen;  ///< parsed when this is the one
    std::function<int()> run;
};

Command addCheck(CLI::App& app);
Command addDraw(CLI::App& app);
Command addSend(CLI::App& app);
Command addStatus(CLI::App& app);
Command addDecode(CLI::App& app);
Command addWatch(CLI::App& app);

/// Tells what went wrong on standard error and returns `status`.
int failed(int status, const std::string& what);

/// The text of a file, its first `most` bytes; nothing, with one line, when there is none that
/// could be read.
std::optional<std::string> readFile(const std::string& path, std::size_t most);

/// The address in the net.ini beside `settings`; empty when there is none.
std::string addressBeside(const std::string& settings);

}  // namespace ctl
