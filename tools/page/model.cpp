#include "page/model.h"

#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "remote/map_text.h"
#include "remote/wire.h"
#include "words/hex.h"
#include "words/keys.h"
#include "words/message_json.h"

namespace page {
namespace {

constexpr const char* kNoBox = "0.0.0.0";

int numberOf(const words::Message& message, std::string_view name) {
    const auto field = std::ranges::find(message.fields, name, &words::Field::name);
    return field == message.fields.end() ? 0 : std::atoi(field->value.c_str());
}

std::string textOf(const words::Message& message, std::string_view name) {
    const auto field = std::ranges::find(message.fields, name, &words::Field::name);
    return field == message.fields.end() ? "" : field->value;
}

/// What a key writes on a US keyboard; nothing for most.
std::string writtenBy(int usage, bool shift) {
    constexpr int kLetterA = 0x04, kDigit1 = 0x1E, kEnter = 0x28;
    constexpr std::string_view kDigits = "1234567890", kShifted = "!@#$%^&*()";
    constexpr std::string_view kRest = "\n\x1B\b\t -=[]\\\\;'`,./",
                               kRestShifted = "\n\x1B\b\t _+{}||:\"~<>?";
    const auto at = [](std::string_view text, int index) {
        return index >= 0 && index < static_cast<int>(text.size())
                   ? std::string(1, text[static_cast<std::size_t>(index)])
                   : std::string();
    };
    if (usage >= kLetterA && usage < kDigit1) {
        return std::string(1, static_cast<char>((shift ? 'A' : 'a') + usage - kLetterA));
    }
    return usage < kEnter ? at(shift ? kShifted : kDigits, usage - kDigit1)
                          : at(shift ? kRestShifted : kRest, usage - kEnter);
}

void write(std::string& typed, const std::string& written) {
    constexpr std::size_t kMost = 60;
    if (written == "\b") {
        typed.resize(typed.empty() ? 0 : typed.size() - 1);
    } else if (written != "\x1B") {
        typed += written == "\t" ? " " : written == "\n" ? "\u23CE" : written;
    }
    while (typed.size() > kMost) {
        typed.erase(0, 1);
    }
    while (!typed.empty() && (static_cast<unsigned char>(typed.front()) & 0xC0U) == 0x80) {
        typed.erase(0, 1);  // the rest of a sign of more bytes
    }
}

void takeKeys(BoxView& box, const words::Message& message) {
    const int modifiers = numberOf(message, "modifiers");
    const int key = numberOf(message, "key");
    constexpr int kShifts = 0x22, kOthers = 0xDD;
    box.keys.clear();
    for (unsigned bit = 0; bit < 8; ++bit) {
        if ((modifiers >> bit & 1) != 0) {
            box.keys.push_back(words::modifierNames(static_cast<std::uint8_t>(1U << bit)));
        }
    }
    if (key != 0) {
        box.keys.push_back(words::usageName(static_cast<std::uint8_t>(key)));
    }
    if (key != 0 && key != box.lastKey && (modifiers & kOthers) == 0) {
        const bool isLetter = key < 0x1E;
        const bool shift = ((modifiers & kShifts) != 0) != (isLetter && box.capsLock);
        write(box.typed, writtenBy(key, shift));
    }
    box.lastKey = key;
}

}  // namespace

void Model::setWall(const std::vector<std::string>& lines, const std::string& local,
                    const std::vector<std::string>& users) {
    *this = Model();
    local_ = local;
    users_ = {users.begin(), users.end()};
    for (const std::string& line : lines) {
        ScreenView screen;
        for (const std::string& text : mapEntries(line)) {
            const MapEntry entry = parseMapEntry(text);
            const auto x = static_cast<unsigned>(entry.x), y = static_cast<unsigned>(entry.y);
            const std::size_t minus = std::min(entry.name.find('-'), entry.name.size());
            const std::string address = entry.name.substr(0, minus);
            if (screen.name.empty()) {
                screen = {x, y, address, {}};
                continue;
            }
            screen.cells.push_back(
                {x, y, address, entry.name.substr(std::min(minus + 1, entry.name.size()))});
            if (address != kNoBox) {
                boxes_[address].mode = users_.contains(address) ? "user list" : "absolute";
            }
        }
        screens_.push_back(std::move(screen));
    }
}

void Model::setAnswer(const std::string& address, const std::optional<std::string>& answer) {
    const auto found = boxes_.find(address);
    if (found == boxes_.end() || users_.contains(address)) {
        return;
    }
    BoxView& box = found->second;
    if (!answer) {
        box.mode = "silent";
        return;
    }
    const words::Message message =
        words::decode({reinterpret_cast<const std::uint8_t*>(answer->data()), answer->size()});
    box.width = std::max(1, numberOf(message, "width"));
    box.height = std::max(1, numberOf(message, "height"));
    box.mode = textOf(message, "mode") == "rel" ? "relative" : "absolute";
}

void Model::take(BoxView& box, const words::Message& message) {
    const std::string& name = message.name;
    if (name.ends_with("keyboard report")) {
        return takeKeys(box, message);
    }
    if (name == "lights") {
        box.capsLock = textOf(message, "capslock") == "on";
        box.numLock = textOf(message, "numlock") == "on";
        return;
    }
    if (!name.ends_with("pointer report")) {
        return;
    }
    const auto [x, y] = box.pointer.value_or(std::pair(box.width / 2, box.height / 2));
    if (name.starts_with("relative")) {
        box.pointer = {std::clamp(x + numberOf(message, "dx"), 0, box.width),
                       std::clamp(y + numberOf(message, "dy"), 0, box.height)};
    } else if (name.starts_with("user")) {
        box.pointer = {numberOf(message, "x") / wire::kUserScaleX,
                       numberOf(message, "y") / wire::kUserScaleY};
    } else {
        box.pointer = {numberOf(message, "x"), numberOf(message, "y")};
    }
    const int buttons = numberOf(message, "buttons");
    box.clicks += (buttons & ~box.buttons) != 0 ? 1 : 0;
    box.buttons = buttons;
    box.wheel += numberOf(message, "wheel") != 0 ? 1 : 0;
}

/// Which box has control is told to nobody: it is the one that got lights or anything that is no
/// release, or the cell that the OSD was told.
void Model::follow(const std::string& name, const words::Message& message) {
    if (message.name == "notice TO:") {
        const std::string screen = textOf(message, "screen");
        const auto column = static_cast<unsigned>(numberOf(message, "column"));
        const auto row = static_cast<unsigned>(numberOf(message, "row"));
        for (const ScreenView& one : screens_) {
            for (const CellView& cell : one.cells) {
                if (one.name == screen && cell.x == column && cell.y == row) {
                    inControl_ = cell.address;
                }
            }
        }
    } else if (name.starts_with("box ") && !message.words.ends_with("keys up") &&
               !message.words.ends_with(",0 buttons none")) {
        inControl_ = name.substr(4);
    }
}

void Model::saw(const std::string& name, const rig::Report& report) {
    const words::Ports ports{0, report.at.port};
    const words::Message message = words::decode(report.bytes, ports);
    follow(name, message);
    status_.saw(name, report.text);
    if (name.starts_with("box ")) {
        take(boxes_[name.substr(4)], message);
    }
    seen_.push_back({++count_, name, report.bytes, ports});
    if (seen_.size() > kMostSeen) {
        seen_.pop_front();
    }
}

void Model::sawLine(std::string_view line) {
    status_.saw(line);
    if (line == "stop kvm") {
        inControl_.clear();
    }
}

nlohmann::json Model::state(unsigned long first) const {
    using nlohmann::json;
    json screens = json::array();
    for (const ScreenView& screen : screens_) {
        json cells = json::array();
        for (const CellView& cell : screen.cells) {
            cells.push_back(
                {{"x", cell.x}, {"y", cell.y}, {"box", cell.address}, {"port", cell.port}});
        }
        screens.push_back({{"x", screen.x},
                           {"y", screen.y},
                           {"name", screen.name},
                           {"here", screen.name == local_},
                           {"cells", std::move(cells)}});
    }
    json boxes = json::object();
    for (const auto& [address, box] : boxes_) {
        boxes[address] = {{"width", box.width},     {"height", box.height}, {"mode", box.mode},
                          {"buttons", box.buttons}, {"keys", box.keys},     {"caps", box.capsLock},
                          {"num", box.numLock},     {"typed", box.typed},   {"clicks", box.clicks},
                          {"wheel", box.wheel}};
        if (box.pointer) {
            boxes[address]["pointer"] = {box.pointer->first, box.pointer->second};
        }
    }
    json seen = json::array();
    for (const Seen& one : seen_) {
        if (one.number >= first) {
            const words::Message message = words::decode(one.bytes, one.ports);
            seen.push_back({{"n", one.number},
                            {"to", one.to},
                            {"name", message.name},
                            {"words", message.words}});
        }
    }
    return {{"screens", std::move(screens)},
            {"boxes", std::move(boxes)},
            {"control", inControl_},
            {"mode", status_.mode()},
            {"seen", std::move(seen)}};
}

nlohmann::json Model::unfold(unsigned long number) const {
    using nlohmann::json;
    const auto one = std::ranges::find(seen_, number, &Seen::number);
    if (one == seen_.end()) {
        return nullptr;
    }
    const words::Message message = words::decode(one->bytes, one->ports);
    return {{"n", number},
            {"name", message.name},
            {"port", one->ports.to},
            {"bytes", words::hexText(one->bytes)},
            {"fields", words::fieldsJson(message)}};
}

}  // namespace page
