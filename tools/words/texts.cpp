#include "words/texts.h"

#include <algorithm>
#include <array>

#include "base/state.h"
#include "remote/map_text.h"
#include "remote/wire.h"
#include "remote/wire_text.h"

namespace words {
namespace {

using Text = std::string_view;

/// One piece of a text and where it stands.
struct Piece {
    std::size_t at;
    Text text;
};

/// What stands between the marks; nothing behind the last.
std::vector<Piece> pieces(Text text, std::size_t from, char between) {
    std::vector<Piece> found;
    while (from < text.size()) {
        const std::size_t end = std::min(text.find(between, from), text.size());
        found.push_back({from, text.substr(from, end - from)});
        from = end + 1;
    }
    return found;
}

/// What stands behind the first `mark`; behind the whole text when there is none.
Piece behind(Piece piece, char mark) {
    const std::size_t at = std::min(piece.text.find(mark), piece.text.size() - 1) + 1;
    return {piece.at + at, piece.text.substr(at)};
}

void put(Message& message, const char* name, Piece piece, const std::string& meaning = "") {
    message.fields.push_back({piece.at, piece.text.size(), name, std::string(piece.text), meaning});
}

std::string entryMeaning(Text text) {
    const MapEntry entry = parseMapEntry(text);
    if (!isOnGrid(entry.x) || !isOnGrid(entry.y)) {
        return "no place on the wall";
    }
    const std::size_t minus = entry.name.find('-');
    const std::string offset =
        minus == std::string::npos ? "" : ", port 80 + " + entry.name.substr(minus + 1);
    const std::string address = entry.name.substr(0, minus);
    return "column " + std::to_string(entry.x) + ", row " + std::to_string(entry.y) + ": " +
           (address == AddressText::kNone ? "no box" : address) + offset;
}

using Fill = void (*)(Text, Message&);

void fillNothing(Text /*text*/, Message& /*message*/) {}

void fillRelation(Text text, Message& message) {
    const Piece map = behind({0, text}, '&');
    if (text == wire::kNoControl) {
        return put(message, "argument", map, "no box is in control any more");
    }
    for (const Piece& entry : pieces(text, map.at, '#')) {
        put(message, "entry", entry, entryMeaning(entry.text));
    }
}

void fillDetails(Text text, Message& message) {
    bool isScreen = true;
    for (const Piece& entry : pieces(text, behind({0, text}, '&').at, '#')) {
        put(message, isScreen ? "screen" : "entry", entry,
            isScreen ? "" : entryMeaning(entry.text));
        isScreen = false;
    }
}

void fillHotkeys(Text text, Message& message) {
    for (const Piece& entry : pieces(text, behind({0, text}, '&').at, '#')) {
        put(message, "hotkey", entry);
    }
}

void fillPlace(Text text, Message& message) {
    const auto numbers = pieces(text, behind({0, text}, ':').at, ',');
    if (numbers.size() > 1) {
        put(message, "column", numbers[0]);
        put(message, "row", numbers[1]);
    }
}

void fillStatusQuery(Text text, Message& message) {
    const auto lines = pieces(text, 0, '\n');
    if (lines.size() > 1) {
        put(message, "console", behind(lines[1], '='), "who is asked");
    }
}

struct CommandMeaning {
    const char* meaning;
    Fill fill;
};

/// By wire::Command.
constexpr std::array<CommandMeaning, wire::kCommands.size()> kCommandMeanings{{
    {"the OSD is closed", fillNothing},
    {"the OSD is open: keys go there", fillNothing},
    {"the preview is closed", fillNothing},
    {"the KVM mode is closed", fillNothing},
    {"the wall's screens", fillRelation},
    {"the cells of one screen", fillDetails},
    {"the key combinations of the OSD", fillHotkeys},
    {"mouse and touch panel rest", fillNothing},
    {"they go on", fillNothing},
    {"control goes to a screen", fillPlace},
    {"the device status is asked for", fillStatusQuery},
}};

void fillCrossing(Text text, Message& message) {
    const auto parts = pieces(text, wire::kCrossing.size(), ',');
    if (parts.size() == 3) {
        put(message, "screen", parts[0]);
        put(message, "column", parts[1]);
        put(message, "row", parts[2]);
    }
}

struct Notice {
    Text word;
    const char* meaning;
    Fill fill;
};

constexpr std::array<Notice, 6> kNotices{{
    {osdS, "Ctrl was tapped three times", fillNothing},
    {osdQ, "Esc closed the OSD", fillNothing},
    {previewS, "Alt was tapped three times", fillNothing},
    {previewQ, "Esc closed the preview", fillNothing},
    {kvmS, "Shift was tapped three times", fillNothing},
    {wire::kCrossing, "control passed over an edge", fillCrossing},
}};

bool mayGoTo(int port, Ports ports) { return ports.to == 0 || ports.to == port; }

bool decodeOrder(Text text, Ports ports, Message& message) {
    const wire::CommandRow* command =
        mayGoTo(wire::kCommandPort, ports) ? wire::commandOf(text) : nullptr;
    const auto* notice = std::find_if(kNotices.begin(), kNotices.end(), [text](const Notice& row) {
        return row.fill == fillNothing ? text == row.word : text.starts_with(row.word);
    });
    if (!mayGoTo(wire::kOsdCommandPort, ports)) {
        notice = kNotices.end();
    }
    const bool isNotice = notice != kNotices.end();
    if (command == nullptr && !isNotice) {
        return false;
    }
    const Text word = isNotice ? notice->word : command->word;
    const auto& taken = isNotice ? CommandMeaning{notice->meaning, notice->fill}
                                 : kCommandMeanings[static_cast<std::size_t>(command->command)];
    const char* kind = command == nullptr ? kNoticeName
                       : isNotice         ? "command or notice"
                                          : kCommandName;
    message.name = std::string(kind) + " " + std::string(word);
    put(message, isNotice ? kNoticeName : kCommandName, {0, word}, taken.meaning);
    taken.fill(text, message);
    return true;
}

bool decodeLights(Text text, Message& message) {
    for (const bool caps : {false, true}) {
        for (const bool num : {false, true}) {
            if (text != wire::lights(caps, num)) {
                continue;
            }
            message.name = kLightsName;
            message.words = std::string("lights caps ") + (caps ? "on" : "off") + " num " +
                            (num ? "on" : "off");
            const Piece behindCaps = behind({0, text}, '=');
            put(message, "capslock",
                {behindCaps.at, behindCaps.text.substr(0, behindCaps.text.find('#'))});
            put(message, "numlock", behind(behindCaps, '='));
            return true;
        }
    }
    return false;
}

bool decodeAnswer(Text text, Message& message) {
    if (text.find(wire::kWidthKey) == Text::npos) {
        return false;
    }
    message.name = kAnswerName;
    const std::pair<const char*, Text> kKeys[] = {
        {"width", wire::kWidthKey}, {"height", wire::kHeightKey}, {"mode", wire::kModeKey}};
    for (const auto& [name, key] : kKeys) {
        const std::size_t found = text.find(key);
        if (found != Text::npos) {
            const std::size_t at = found + key.size();
            const std::size_t size = std::min({text.find('&', at), text.size(), at + 4}) - at;
            put(message, name, {at, text.substr(at, size)});
        }
    }
    std::ranges::sort(message.fields, {}, &Field::at);
    return true;
}

bool decodeStatus(Text text, Message& message) {
    if (!text.starts_with(wire::kStatusHead)) {
        return false;
    }
    message.name = kStatusName;
    const auto lines = pieces(text, 0, '\n');
    put(message, "console", behind(lines[1], '='), "who answers");
    const Piece counts = lines.size() > 2 ? behind(lines[2], '=') : Piece{text.size(), Text{}};
    constexpr std::array kDevices = {"mice", "keyboards", "panels"};
    if (counts.text.size() == kDevices.size()) {
        for (std::size_t i = 0; i < kDevices.size(); ++i) {
            put(message, kDevices[i], {counts.at + i, counts.text.substr(i, 1)});
        }
    }
    return true;
}

}  // namespace

std::vector<std::string> textNames() {
    std::vector<std::string> names{kLightsName, kQueryName, kAnswerName};
    for (const Notice& notice : kNotices) {
        names.push_back(std::string(kNoticeName) + " " + std::string(notice.word));
    }
    for (const wire::CommandRow& row : wire::kCommands) {
        names.push_back(std::string(kCommandName) + " " + std::string(row.word));
    }
    names.emplace_back(kStatusName);
    return names;
}

bool decodeText(Text text, Ports ports, Message& message) {
    if (text == wire::kQuery) {
        message.name = kQueryName;
        put(message, "query", {0, text});
        return true;
    }
    return decodeLights(text, message) || decodeStatus(text, message) ||
           decodeOrder(text, ports, message) || decodeAnswer(text, message);
}

}  // namespace words
