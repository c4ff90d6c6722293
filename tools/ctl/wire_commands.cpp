// decode and watch: datagrams in words.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdio>
#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>

#include "capture/datagram.h"
#include "capture/packet_socket.h"
#include "capture/pcap.h"
#include "ctl/commands.h"
#include "remote/wire.h"
#include "words/hex.h"
#include "words/message.h"
#include "words/message_json.h"

namespace ctl {
namespace {

using capture::Datagram;
using words::Message;

std::string placeText(const capture::Place& place) {
    return place.address + ":" + std::to_string(place.port);
}

nlohmann::json asJson(const Message& message, words::Bytes bytes) {
    return {{"name", message.name},
            {"words", message.words},
            {"bytes", words::hexText(bytes)},
            {"fields", words::fieldsJson(message)}};
}

Message decodeOf(const Datagram& datagram) {
    return words::decode(datagram.bytes, {datagram.from.port, datagram.to.port});
}

/// One datagram of a capture: its road and words in a line, or an object of JSON in one.
void print(const Datagram& datagram, const Message& message, bool isJson) {
    constexpr std::int64_t kSecond = 1'000'000;
    const auto seconds = static_cast<long long>(datagram.microseconds / kSecond);
    const auto rest = static_cast<long long>(datagram.microseconds % kSecond);
    if (isJson) {
        nlohmann::json json = asJson(message, datagram.bytes);
        json["from"] = placeText(datagram.from);
        json["to"] = placeText(datagram.to);
        json["microseconds"] = datagram.microseconds;
        std::puts(json.dump().c_str());
    } else {
        std::printf("%lld.%06lld  %s > %s  %s: %s\n", seconds, rest,
                    placeText(datagram.from).c_str(), placeText(datagram.to).c_str(),
                    message.name.empty() ? "unknown" : message.name.c_str(), message.words.c_str());
    }
}

struct DecodeOptions {
    std::vector<std::string> input;
    int port = 0;
    bool isJson = false;
};

int decodeHex(const DecodeOptions& options, const std::string& text) {
    const auto bytes = words::bytesOfHex(text);
    if (!bytes || bytes->empty()) {
        return failed(kMistakes, "these are no bytes in hex: " + text.substr(0, 60));
    }
    const Message message = words::decode(*bytes, {0, options.port});
    if (options.isJson) {
        std::puts(asJson(message, *bytes).dump(2).c_str());
    } else {
        std::fputs(words::table(*bytes, message).c_str(), stdout);
    }
    return message.name.empty() ? kMistakes : kFine;
}

int decodeCapture(const DecodeOptions& options, const std::string& file, const std::string& text) {
    std::size_t others = 0;
    const std::string problem = capture::readPcap(text, [&](const Datagram& datagram) {
        const Message message = decodeOf(datagram);
        if (message.name.empty()) {
            ++others;
        } else {
            print(datagram, message, options.isJson);
        }
    });
    if (others > 0) {
        std::fprintf(stderr, "%zu other UDP datagrams\n", others);
    }
    return problem.empty() ? kFine : failed(kMistakes, file + ": " + problem);
}

int runDecode(const DecodeOptions& options) {
    constexpr std::size_t kMost = 256U << 20;
    const bool isFile = options.input.size() == 1 && access(options.input[0].c_str(), F_OK) == 0;
    if (isFile) {
        const auto text = readFile(options.input[0], kMost);
        return text ? decodeCapture(options, options.input[0], *text) : kNothingThere;
    }
    std::string hex;
    for (const std::string& word : options.input) {
        hex += word + ' ';
    }
    return decodeHex(options, hex);
}

struct WatchOptions {
    long count = 0;
    bool isJson = false;
};

int runWatch(const WatchOptions& options) {
    capture::PacketSocket socket(wire::kOsdCommandPort, wire::kOsdKeyPort);
    if (!socket.problem().empty()) {
        return failed(kNothingThere, socket.problem());
    }
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    std::fprintf(stderr, "watching ports %d and %d\n", wire::kOsdCommandPort, wire::kOsdKeyPort);
    for (long seen = 0; options.count == 0 || seen < options.count;) {
        const auto packet = socket.next(-1);
        auto datagram = packet ? capture::datagramIn(*packet) : std::nullopt;
        if (datagram) {
            datagram->microseconds = std::chrono::duration_cast<std::chrono::microseconds>(
                                         std::chrono::system_clock::now().time_since_epoch())
                                         .count();
            print(*datagram, decodeOf(*datagram), options.isJson);
            ++seen;
        }
    }
    return kFine;
}

}  // namespace

Command addDecode(CLI::App& app) {
    const auto options = std::make_shared<DecodeOptions>();
    auto* decode = app.add_subcommand(
        "decode", "Tell datagrams in words. Status 0: all read, 1: not all, 3: no such file");
    decode
        ->add_option("BYTES", options->input,
                     "a datagram in hex, with or without blanks, or a pcap file")
        ->required();
    decode->add_option("--port", options->port, "to which a datagram in hex went")
        ->check(CLI::Range(1, 65535));
    decode->add_flag("--json", options->isJson, "as JSON; of a pcap file an object a line");
    decode->footer(
        "Examples:\n"
        "  tavrikctl decode 57 ab 01 02 00 04 00 00 00 00 00\n"
        "  tcpdump -i eth0 -w wall.pcap udp; tavrikctl decode wall.pcap");
    return {decode, [options] { return runDecode(*options); }};
}

Command addWatch(CLI::App& app) {
    const auto options = std::make_shared<WatchOptions>();
    auto* watch = app.add_subcommand(
        "watch", "Tell what reaches the OSD, as it comes, and take nothing from it");
    watch->add_option("--count", options->count, "end after so many")->check(CLI::PositiveNumber);
    watch->add_flag("--json", options->isJson, "an object of JSON a line");
    watch->footer("Example:\n  sudo tavrikctl watch");
    return {watch, [options] { return runWatch(*options); }};
}

}  // namespace ctl
