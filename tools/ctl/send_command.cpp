// send: commands to a console, or to all of them.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdio>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <thread>

#include "config/software_config.h"
#include "ctl/channel.h"
#include "ctl/commands.h"
#include "ctl/orders.h"
#include "remote/wire.h"
#include "words/message.h"

namespace ctl {
namespace {

constexpr std::size_t kMostSettings = kSettingsLimit + 1;

struct SendOptions {
    std::string name;
    std::vector<std::string> words;
    std::string from;
    std::string to;
    bool goesToAll = false;
    bool isDry = false;
    bool isSure = false;
    bool isJson = false;

    bool takesSettings() const {
        return name == "relation" || name == "details" || name == "hotkey";
    }
};

/// Entries given as words: "relation" screens, each a map line of its own; "details" a screen's
/// name and its cells.
Orders ordersOfWords(const SendOptions& options) {
    const auto& words = options.words;
    if (options.name == "hotkey") {
        return hotkeyOrder(words == std::vector<std::string>{"none"} ? std::vector<std::string>{}
                                                                     : words);
    }
    if (options.name == "relation" && words == std::vector<std::string>{"none"}) {
        return {{std::string(wire::kNoControl)}, {}};
    }
    if (options.name == "relation") {
        return relationOrder(settingsWith(words));
    }
    std::string line = "0,0";
    for (const std::string& word : words) {
        line += (line == "0,0" ? "," : "#") + word;
    }
    return detailsOrder(settingsWith({line}), "");
}

/// What is to be sent, or one line on standard error and nothing.
std::optional<std::vector<std::string>> textsOf(const SendOptions& options, int& status) {
    const bool hasWords = !options.words.empty(), hasFile = !options.from.empty();
    status = kUsage;
    Orders orders;
    if (!options.takesSettings()) {
        orders = simpleOrder(options.name, options.words);
    } else if (hasWords == hasFile && !(hasFile && options.name == "details")) {
        orders.problem = "either words or --from FILE";
    } else if (!hasFile) {
        orders = ordersOfWords(options);
    } else {
        const auto settings = readFile(options.from, kMostSettings);
        if (!settings) {
            status = kNothingThere;
            return std::nullopt;
        }
        status = kMistakes;
        orders = options.name == "relation" ? relationOrder(*settings)
                 : options.name == "hotkey"
                     ? hotkeyOrder(hotkeysIn(*settings))
                     : detailsOrder(*settings, hasWords ? options.words.front() : "");
    }
    if (!orders.problem.empty()) {
        failed(status, options.name + ": " + orders.problem);
        return std::nullopt;
    }
    return orders.texts;
}

std::string destination(const SendOptions& options) {
    return options.goesToAll ? wire::kControlGroup : options.to;
}

void show(const SendOptions& options, const std::vector<std::string>& texts) {
    const std::string to = destination(options) + ":" + std::to_string(wire::kCommandPort);
    if (options.isJson) {
        std::puts(
            nlohmann::json{{"to", to}, {"texts", texts}, {"sent", !options.isDry}}.dump(2).c_str());
        return;
    }
    for (const std::string& text : texts) {
        const words::Bytes bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
        std::printf("to %s\n%s", to.c_str(),
                    words::table(bytes, words::decode(bytes, {0, wire::kCommandPort})).c_str());
    }
}

/// Tells what is saved now and asks. On the console itself that can be read; from elsewhere it
/// cannot.
bool mayReplace(const SendOptions& options) {
    const std::string local = SoftwareConfig::kPath;
    const bool isHere = !options.goesToAll && addressBeside(local) == options.to;
    const auto settings = isHere ? readFile(local, kMostSettings) : std::nullopt;
    std::fprintf(stderr, "This replaces %s of %s",
                 options.name == "relation"  ? "the wall, the cells of every screen with it,"
                 : options.name == "details" ? "a screen's cells"
                                             : "all hotkeys",
                 options.goesToAll ? "every console of the site" : options.to.c_str());
    std::fprintf(stderr, settings ? ":\n%s" : ", which can be read on the console alone%s.\n",
                 settings ? replacedBy(options.name, *settings).c_str() : "");
    if (isatty(STDIN_FILENO) == 0) {
        std::fprintf(stderr, "Nobody is there to be asked; --yes sends it.\n");
        return false;
    }
    std::fprintf(stderr, "Send it? [y/N] ");
    std::string answer;
    std::getline(std::cin, answer);
    return answer == "y" || answer == "yes";
}

int sendAll(const SendOptions& options, const std::vector<std::string>& texts) {
    const Channel channel;
    constexpr int kPatienceMs = 3000;  // a save on a slow card
    constexpr std::chrono::milliseconds kBetween{50};
    for (const std::string& text : texts) {
        if (const std::string problem = channel.send(destination(options), text);
            !problem.empty()) {
            return failed(kNothingThere,
                          "cannot be sent to " + destination(options) + ": " + problem);
        }
        if (options.goesToAll) {
            std::this_thread::sleep_for(kBetween);
        } else if (!channel.status(options.to, kPatienceMs)) {
            return failed(kNothingThere,
                          "sent, but " + options.to +
                              " does not answer: is that the address in its net.ini?");
        }
    }
    return kFine;
}

int runSend(const SendOptions& options) {
    int status = kFine;
    const auto texts = textsOf(options, status);
    if (!texts) {
        return status;
    }
    if (options.isDry) {
        show(options, *texts);
        return kFine;
    }
    const bool replaces = options.takesSettings() && texts->front() != wire::kNoControl;
    if (replaces && !options.isSure && !mayReplace(options)) {
        return failed(kUsage, "nothing was sent");
    }
    status = sendAll(options, *texts);
    if (status == kFine) {
        show(options, *texts);
    }
    return status;
}

CLI::App* addOrder(CLI::App& send, SendOptions& options, const std::string& name,
                   const std::string& what) {
    auto* command = send.add_subcommand(name, what);
    command->add_option("WORDS", options.words, what);
    command->callback([&options, name] { options.name = name; });
    return command;
}

}  // namespace

Command addSend(CLI::App& app) {
    const auto options = std::make_shared<SendOptions>();
    auto* send = app.add_subcommand(
        "send", "Send a command. Status 0: worked off, 1: mistakes, 2: usage, 3: no answer");
    send->require_subcommand(1);
    send->fallthrough();
    addOrder(*send, *options, "osd", "on or off: keys go to the OSD, or to the computer again");
    addOrder(*send, *options, "preview", "off: out of the preview");
    addOrder(*send, *options, "kvm", "off: out of the KVM mode");
    addOrder(*send, *options, "pause", "mouse and touch panel rest");
    addOrder(*send, *options, "continue", "mouse and touch panel go on");
    addOrder(*send, *options, "mto", "COLUMN ROW: control goes to that screen");
    for (const auto& [name, what] :
         {std::pair("relation", "the wall's screens, as 0,0,192.168.1.20; \"none\": no control"),
          std::pair("details", "a screen's cells: 192.168.1.20 0,0,192.168.1.31 1,0,192.168.1.32"),
          std::pair("hotkey", "the OSD's combinations, as CTRL+F1; \"none\": no combination")}) {
        addOrder(*send, *options, name, what)
            ->add_option("--from", options->from, "take them from this settings file");
    }
    auto* to = send->add_option("--to", options->to, "the console: the address in its net.ini")
                   ->check(CLI::ValidIPV4);
    auto* all = send->add_flag("--all-consoles", options->goesToAll,
                               "to every console of the site, which does not answer");
    to->excludes(all);
    send->add_flag("--dry-run", options->isDry, "show the datagram, send nothing");
    send->add_flag("--yes", options->isSure, "do not ask before saved settings are replaced");
    send->add_flag("--json", options->isJson, "show it as JSON");
    send->footer(
        "Examples:\n"
        "  tavrikctl send osd on --to 192.168.1.20\n"
        "  tavrikctl send mto 1 0 --to 192.168.1.20\n"
        "  tavrikctl send hotkey CTRL+F1 ALT+2 --to 192.168.1.20 --dry-run\n"
        "  tavrikctl send relation --from tav_rik.ini --to 192.168.1.20\n"
        "  tavrikctl send details --from tav_rik.ini --all-consoles --yes");
    return {send, [options] {
                if (options->to.empty() && !options->goesToAll) {
                    return failed(kUsage, "--to or --all-consoles is missing");
                }
                return runSend(*options);
            }};
}

}  // namespace ctl
