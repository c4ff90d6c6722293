// status: what a console tells of itself.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

#include "config/software_config.h"
#include "ctl/board.h"
#include "ctl/channel.h"
#include "ctl/commands.h"
#include "remote/wire.h"
#include "remote/wire_text.h"

namespace ctl {
namespace {

struct StatusOptions {
    std::string board;
    bool isJson = false;
};

/// What only the console itself can tell.
struct Inside {
    std::string unit;
    std::vector<int> closed;  ///< ports of the daemon that nobody has
    std::optional<LastBox> box;
};

Inside inside() {
    constexpr std::size_t kMostPorts = 1U << 20;
    Inside found;
    found.unit = outputOf("systemctl is-active tavrik 2>/dev/null").value_or("no service manager");
    found.unit.erase(found.unit.find_last_not_of('\n') + 1);
    const std::string ports = readFile("/proc/net/udp", kMostPorts).value_or("");
    for (const int port : {wire::kCommandPort, wire::kReportSourcePort, wire::kQuerySourcePort}) {
        if (!isBound(ports, port)) {
            found.closed.push_back(port);
        }
    }
    found.box =
        lastBox(outputOf("journalctl --namespace=tavrik -o cat --no-pager -n 20000 2>/dev/null")
                    .value_or(""));
    return found;
}

std::string closedText(const std::vector<int>& closed) {
    std::string text;
    for (const int port : closed) {
        text += (text.empty() ? "" : ", ") + std::to_string(port);
    }
    return closed.empty() ? "open" : text + " not open";
}

void printStatus(const StatusOptions& options, const DeviceCount& count,
                 const std::optional<Inside>& within) {
    if (options.isJson) {
        nlohmann::json json{{"console", options.board},
                            {"mice", count.mice},
                            {"keyboards", count.keyboards},
                            {"panels", count.panels},
                            {"digits", count.digits}};
        if (within) {
            json["unit"] = within->unit;
            json["closed"] = within->closed;
            json["box"] = within->box ? within->box->box : "";
        }
        std::puts(json.dump(2).c_str());
        return;
    }
    std::printf("%s: %s\n", options.board.c_str(), inWords(count).c_str());
    if (!within) {
        std::puts("Which box has control is not told over the wire; ask on the console itself.");
        return;
    }
    std::printf("unit %s, ports %s\n", within->unit.c_str(), closedText(within->closed).c_str());
    if (within->box) {
        std::printf("the log's last box in control: %s (%s)\n", within->box->box.c_str(),
                    within->box->line.c_str());
    } else {
        std::puts("the log tells no box in control");
    }
}

int runStatus(const StatusOptions& options) {
    constexpr int kTries = 3;
    constexpr int kTryMs = 1000;
    const Channel channel;
    std::optional<std::string> answer;
    for (int i = 0; i < kTries && !answer; ++i) {
        answer = channel.status(options.board, kTryMs);
    }
    const bool isHere = addressBeside(SoftwareConfig::kPath) == options.board;
    const auto within = isHere ? std::optional(inside()) : std::nullopt;
    if (!answer) {
        if (within) {
            std::fprintf(stderr, "unit %s, ports %s\n", within->unit.c_str(),
                         closedText(within->closed).c_str());
        }
        return failed(kNothingThere,
                      options.board + " does not answer: is that the address in its net.ini?");
    }
    printStatus(options, deviceCount(*answer), within);
    return kFine;
}

}  // namespace

Command addStatus(CLI::App& app) {
    const auto options = std::make_shared<StatusOptions>();
    auto* status = app.add_subcommand(
        "status",
        "Ask a console for its devices; on the console itself, more. Status 3: no answer");
    status->add_option("BOARD", options->board, "the address in its net.ini")
        ->required()
        ->check(CLI::ValidIPV4);
    status->add_flag("--json", options->isJson, "as JSON");
    status->footer("Example:\n  tavrikctl status 192.168.1.20");
    return {status, [options] { return runStatus(*options); }};
}

}  // namespace ctl
