#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <thread>

#include "capture/packet_socket.h"
#include "capture/pcap.h"
#include "docs/examples.h"
#include "rig/isolation.h"
#include "rig/script.h"
#include "rig/tool.h"

namespace {

namespace fs = std::filesystem;

/// Everything that passes in this network while it lives.
class Recorder {
 public:
    Recorder() : thread_([this](const std::stop_token& end) { record(end); }) {}
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    const std::string& problem() const { return socket_.problem(); }
    /// Nothing more is captured; what was can be looked at then.
    void stop() {
        thread_.request_stop();
        thread_.join();
    }
    const std::vector<capture::Datagram>& datagrams() const { return datagrams_; }
    const std::string& pcap() const { return pcap_; }

 private:
    void record(const std::stop_token& end) {
        constexpr int kLookMs = 50;
        while (!end.stop_requested() && socket_.problem().empty()) {
            const auto packet = socket_.next(kLookMs);
            auto datagram = packet ? capture::datagramIn(*packet) : std::nullopt;
            if (datagram) {
                datagram->microseconds = static_cast<std::int64_t>(datagrams_.size()) * 1000;
                pcap_ += capture::pcapRecord(*packet, datagram->microseconds);
                datagrams_.push_back(std::move(*datagram));
            }
        }
    }

    capture::PacketSocket socket_{0, 0};
    std::vector<capture::Datagram> datagrams_;
    std::string pcap_ = capture::pcapHead();
    std::jthread thread_;
};

std::string read(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void write(const fs::path& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    if (!file.flush()) {
        throw fs::filesystem_error("cannot be written", path,
                                   std::make_error_code(std::errc::io_error));
    }
}

/// Plays every script of the folder. Tells what did not go as written.
bool playAll(const fs::path& folder) {
    std::vector<fs::path> scripts;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (entry.path().extension() == ".script") {
            scripts.push_back(entry.path());
        }
    }
    std::sort(scripts.begin(), scripts.end());
    bool isWell = !scripts.empty();
    for (const fs::path& path : scripts) {
        const rig::ParsedScript parsed = rig::loadScript(path);
        if (!parsed.script) {
            throw std::runtime_error(parsed.problem);
        }
        rig::Plan plan = parsed.script->plan;
        plan.virtualClock = true;
        rig::World world(plan);
        for (const std::string& fault : runScript(*parsed.script, world)) {
            std::fprintf(stderr, "%s\n", fault.c_str());
            isWell = false;
        }
    }
    return isWell;
}

int compare(const fs::path& file, const std::string& text, bool updates) {
    if (updates) {
        write(file, text);
    }
    if (read(file) == text) {
        return 0;
    }
    std::fprintf(stderr, "%s is not what the console sends: ./test --docs --update\n",
                 file.c_str());
    return 1;
}

int run(int argc, char** argv) {
    CLI::App app("The examples of a page, from what the golden scripts send.");
    std::string page, scripts, pcap;
    bool updates = false;
    app.add_option("PAGE", page)->required();
    app.add_option("SCRIPTS", scripts, "the folder of golden scripts")->required();
    app.add_option("--pcap", pcap, "keep what was captured in this file");
    app.add_flag("--update", updates, "write the page anew");
    CLI11_PARSE(app, argc, argv);
    if (!rig::enterOwnNetwork()) {
        std::fprintf(stderr, "tavrik-docs: no network namespace of its own\n");
        return 1;
    }
    Recorder recorder;
    if (!recorder.problem().empty()) {
        std::fprintf(stderr, "tavrik-docs: %s\n", recorder.problem().c_str());
        return 1;
    }
    const bool isWell = playAll(scripts);
    recorder.stop();
    if (!pcap.empty()) {
        write(pcap, recorder.pcap());
    }
    const docs::Page made = docs::withExamples(read(page), recorder.datagrams());
    for (const std::string& problem : made.problems) {
        std::fprintf(stderr, "%s: %s\n", page.c_str(), problem.c_str());
    }
    const int status = compare(page, made.text, updates);
    return isWell && made.problems.empty() ? status : 1;
}

}  // namespace

int main(int argc, char** argv) { return rig::runTool("tavrik-docs", run, argc, argv); }
