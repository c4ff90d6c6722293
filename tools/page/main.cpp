#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <system_error>

#include "base/file_start.h"
#include "page/server.h"
#include "page/session.h"
#include "page/settings_view.h"
#include "rig/isolation.h"
#include "rig/tool.h"

namespace {

struct Options {
    page::Place place;
    std::string wall = "2x1", cells = "2x1";
    std::vector<std::string> users;
};

std::string randomToken() {
    std::random_device random;
    std::string token;
    for (int i = 0; i < 32; ++i) {
        token += "0123456789abcdef"[random() % 16];
    }
    return token;
}

/// The text of the settings file that is asked for; empty, with one line, when there is none.
std::string settingsOf(const Options& options) {
    if (std::string made = page::wallOfSize(options.wall, options.cells); !made.empty()) {
        return made;
    }
    constexpr std::size_t kMost = 1U << 20;
    const FileText file = readFileStart(options.wall, kMost);
    if (file.state != FileState::kRead) {
        std::fprintf(
            stderr,
            "tavrik-page: --wall wants a settings file that can be read, or a size such as 2x2 "
            "(and --cells 2x1), with at most 64 boxes in all\n");
    }
    return file.text;
}

void tellPlace(const page::Place& place) {
    std::printf("http://%s:%u/%s%s\n", place.address.c_str(), place.port,
                place.token.empty() ? "" : "?", place.token.c_str());
    const char* const connection = std::getenv("SSH_CONNECTION");
    if (connection != nullptr && place.token.empty()) {
        const std::string text(connection);
        const std::size_t there = text.find(' ', text.find(' ') + 1) + 1;
        std::printf("From your own machine: ssh -L %u:127.0.0.1:%u %s\n", place.port, place.port,
                    text.substr(there, text.find(' ', there) - there).c_str());
    }
    std::puts("Ctrl+C ends it.");
}

int run(int argc, char** argv) {
    CLI::App app("A console and its wall, live in a browser.");
    Options options;
    app.add_option("--port", options.place.port, "of the page; 0: any that is free");
    app.add_option("--listen", options.place.address,
                   "an address of this machine: the page can be seen elsewhere, with a token")
        ->check(CLI::ValidIPV4);
    app.add_option("--wall", options.wall, "a settings file, or the number of screens as 2x1");
    app.add_option("--cells", options.cells, "of each screen, as 2x1");
    app.add_option("--user", options.users, "a box of the wall that stands in the user list")
        ->check(CLI::ValidIPV4);
    CLI11_PARSE(app, argc, argv);
    const std::string settings = settingsOf(options);
    if (settings.empty()) {
        return 2;
    }
    if (!options.place.address.starts_with("127.")) {
        options.place.token = randomToken();
    }
    int listening = -1;
    try {
        listening = page::listenAt(options.place);  // before the network is left behind
    } catch (const std::system_error& problem) {
        std::fprintf(stderr, "tavrik-page: %s. --port N takes another port.\n", problem.what());
        return 1;
    }
    const bool isOwnNetwork = rig::enterOwnNetwork() && rig::ownEveryAddress();
    page::Session session(settings, options.users, TAVRIK_SCRIPTS, isOwnNetwork);
    page::Server server(listening, options.place, TAVRIK_PAGE, session.handlers());
    session.begin(server);
    tellPlace(options.place);
    server.run();
    session.end();
    return 0;
}

}  // namespace

int main(int argc, char** argv) { return rig::runTool("tavrik-page", run, argc, argv); }
