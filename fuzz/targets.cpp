#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>

#include "app/board.h"
#include "app/user_list.h"
#include "capture/pcap.h"
#include "config/config_lines.h"
#include "control/hotkey_table.h"
#include "ctl/check.h"
#include "ctl/show.h"
#include "input/listing.h"
#include "net/local_ip.h"
#include "page/message.h"
#include "remote/box_reply.h"
#include "remote/map_text.h"
#include "simulated/console.h"
#include "words/hex.h"
#include "words/message.h"

/// Everything that reads what comes from outside, each as one target. What must hold whatever comes
/// is checked; the sanitizers see to the rest.

namespace {

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

/// A console with a simulated wall around it: nothing is down where control has left.
class Watched : public simulated::Console {
 public:
    Watched() : Console({}) {}

 private:
    void composed(int datagrams, int due) override { require(datagrams <= due); }
    void afterPass() override { require(!downWhereControlLeft()); }
    void served() override { require(!downWhereControlLeft()); }
};

/// Calls `take` for each piece of `text` between bytes 0xFF.
template <class Take>
void forEachPiece(std::string_view text, Take take) {
    while (!text.empty()) {
        const std::string_view piece = text.substr(0, text.find('\xFF'));
        take(std::string(piece));
        text.remove_prefix(std::min(text.size(), piece.size() + 1));
    }
}

/// What was read is written so that it is read again.
[[maybe_unused]] void settings(std::string_view text) {
    std::vector<std::string> values(kSettingCount);
    const auto found = settingsIn(text);
    require(found.size() <= values.size());
    for (std::size_t i = 0; i < found.size(); ++i) {
        values[i] = found[i];
        settingNumber(values[i]);
    }
    settingsText(values);
}

[[maybe_unused]] void check(std::string_view text) {
    const ctl::Checked checked = ctl::check(text, "10.0.0.1");
    const bool isClean =
        checked.count(ctl::Severity::kError) + checked.count(ctl::Severity::kWarning) == 0;
    require(isClean == checked.takesEverything);
    ctl::asText(checked, "file", true);
    ctl::asJson(checked, "file");
    if (const auto better = ctl::fixed(text, "10.0.0.1")) {
        ctl::difference(text, *better);
        require(ctl::check(*better, "10.0.0.1").takesEverything);
    }
}

[[maybe_unused]] void user_list(std::string_view text) {
    try {
        for (const AddressText& address : parseUserList(text).addresses) {
            require(address.view().size() < AddressText::kSize);
        }
    } catch (const std::out_of_range&) {
        // an empty line in a group is meant to end the process
    }
}

[[maybe_unused]] void net_ini(std::string_view text) { localIpFromText(text); }

[[maybe_unused]] void hardware(std::string_view text) {
    const auto identifier = boardIdentifierIn(text);
    require(!identifier || identifier->size() <= text.size());
}

/// The wall's text as a command brings it, screens and cells.
[[maybe_unused]] void map(std::string_view text) {
    Watched console;
    forEachPiece(text, [&](const std::string& piece) {
        parseMapEntry(piece);
        console.order("relation&" + piece);
        console.order("details&" + piece);
        console.happensNow({simulated::Operation::kMove, 0, 5000, 10, 0});
    });
}

/// Datagrams to the control port, with a key down.
[[maybe_unused]] void command(std::string_view text) {
    Watched console;
    forEachPiece(text, [&](const std::string& piece) {
        console.happensNow({simulated::Operation::kKey, 0, 0, 0, 0});
        console.order(piece.substr(0, piece.find('\0')));
    });
}

/// A file of packets, or one datagram whose first bytes are its ports; also as hex.
[[maybe_unused]] void decode(std::string_view text) {
    const auto look = [](words::Bytes bytes, words::Ports ports) {
        const words::Message message = words::decode(bytes, ports);
        for (const words::Field& field : message.fields) {
            require(field.at + field.size <= bytes.size());
        }
        require(!words::table(bytes, message).empty());
        require(words::bytesOfHex(words::hexText(bytes)) ==
                std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
    };
    capture::readPcap(text, [&](const capture::Datagram& datagram) {
        look(datagram.bytes, {datagram.from.port, datagram.to.port});
    });
    words::bytesOfHex(text);
    const words::Bytes bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    capture::datagramIn(bytes);
    constexpr int kPorts[] = {0, 80, 2000, 41236, 41237, 41238};
    for (const int port : kPorts) {
        look(bytes, {0, port});
    }
}

/// What a browser says to the page's server.
[[maybe_unused]] void browser(std::string_view text) {
    if (const auto said = page::parseSaid(text)) {
        require(said->kind != page::Said::Kind::kKey || said->code != 0);
        require(said->x >= -10'000 && said->y >= -10'000 && said->y <= 10'000);
    }
    page::keyOfCode(text);
}

[[maybe_unused]] void answer(std::string_view text) {
    Watched console;
    forEachPiece(text, [&](const std::string& piece) {
        const BoxReply reply = parseBoxReply(piece);
        require(!reply.height || !reply.height->overlong || reply.height->value < 10'000);
        console.answer(piece);
        console.happensNow({simulated::Operation::kQuery, 0, 0, 0, 0});
        console.happensNow({simulated::Operation::kMove, 0, 40, 40, 0});
    });
}

[[maybe_unused]] void listing(std::string_view text) {
    const DeviceListing taken = takeListing(std::string(text));
    require(taken.full.size() <= kListingLimit);
    findPanel(taken.full);
    require(parseHandlers(taken.handlers).size() <= text.size() + 1);
}

/// Seven bytes a record: device, type, code, value.
[[maybe_unused]] void records(std::string_view text) {
    Watched console;
    for (; text.size() >= 7; text.remove_prefix(7)) {
        const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
        console.give(byte(0), {0, 0, static_cast<std::uint16_t>(byte(1) % 0x20),
                               static_cast<std::uint16_t>(byte(2) | byte(3) << 8),
                               byte(4) | byte(5) << 8 | static_cast<signed char>(byte(6)) * 65536});
    }
}

/// What is saved of a list gives the same table.
[[maybe_unused]] void hotkeys(std::string_view text) {
    for (const bool fromOsd : {false, true}) {
        const ParsedHotkeys parsed = parseHotkeys(std::string(text), fromOsd);
        if (parsed.problem.empty()) {
            const ParsedHotkeys again = parseHotkeys(parsed.saved, false);
            require(again.problem.empty() && again.table.count == parsed.table.count);
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, std::size_t size) {
    FUZZ_TARGET({reinterpret_cast<const char*>(bytes), size});
    return 0;
}
