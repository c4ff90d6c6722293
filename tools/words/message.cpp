#include "words/message.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "words/hex.h"
#include "words/reports.h"
#include "words/texts.h"

namespace words {
namespace {

/// The bytes as text, without the zeroes at their end; nothing when that is empty or not printable.
std::optional<std::string_view> textOf(Bytes bytes) {
    const std::string_view all(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    const std::string_view text = all.substr(0, all.find_last_not_of('\0') + 1);
    const bool isText = std::ranges::all_of(
        text, [](char letter) { return letter == '\n' || (letter >= ' ' && letter <= '~'); });
    return text.empty() || !isText ? std::nullopt : std::optional(text);
}

std::string oneLine(std::string_view text) {
    std::string line;
    for (const char letter : text) {
        line += letter == '\n' ? std::string("\\n") : std::string(1, letter);
    }
    return line;
}

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

/// A line of the table: `size` bytes of one or more fields of one name.
std::string row(std::size_t at, const std::string& bytes, const std::string& name,
                const std::string& meaning) {
    const std::string offset = std::to_string(at);
    std::string line = std::string(4 - std::min<std::size_t>(offset.size(), 4), ' ') + offset +
                       "  " + padded(bytes, 22) + "  " + padded(name, 10) + " " + meaning;
    line.erase(line.find_last_not_of(' ') + 1);
    return line + "\n";
}

}  // namespace

Message decode(Bytes bytes, Ports ports) {
    Message message;
    if (bytes.empty()) {
        message.words = "empty";
        return message;
    }
    if (decodeReport(bytes, message)) {
        return message;
    }
    const auto text = textOf(bytes);
    if (!text) {
        message.words = "hex " + hexText(bytes);
        return message;
    }
    decodeText(*text, ports, message);
    if (message.words.empty()) {
        const std::size_t zeroes = bytes.size() - text->size();
        message.words =
            oneLine(*text) + (zeroes == 0 ? "" : " + " + std::to_string(zeroes) + " NUL");
    }
    return message;
}

std::string describe(Bytes bytes) { return decode(bytes).words; }

std::string table(Bytes bytes, const Message& message) {
    const auto text = textOf(bytes);
    std::string lines = (message.name.empty() ? "unknown" : message.name) + ", " +
                        std::to_string(bytes.size()) + " bytes: " + message.words + "\n";
    for (std::size_t i = 0; i < message.fields.size();) {
        const Field& first = message.fields[i];
        if (text) {
            lines += row(first.at, '"' + oneLine(first.value) + '"', first.name, first.meaning);
            ++i;
            continue;
        }
        std::size_t size = 0;
        std::string meaning;
        for (; i < message.fields.size() && message.fields[i].name == first.name; ++i) {
            const Field& field = message.fields[i];
            const bool saysValue = field.meaning.empty() && field.value != "0";
            const std::string& said = saysValue ? field.value : field.meaning;
            size += field.size;
            meaning += (meaning.empty() || said.empty() ? "" : " ") + said;
        }
        lines += row(first.at, hexText(bytes.subspan(first.at, size)), first.name, meaning);
    }
    return lines;
}

std::vector<std::string> messageNames() {
    std::vector<std::string> names = reportNames();
    for (std::string& name : textNames()) {
        names.push_back(std::move(name));
    }
    return names;
}

}  // namespace words
