#include "remote/wire_text.h"

#include <algorithm>
#include <cstdio>

namespace wire {

static_assert([] {
    for (std::size_t i = 0; i < kCommands.size(); ++i) {
        if (kCommands[i].command != static_cast<Command>(i)) {
            return false;
        }
    }
    return true;
}());

const CommandRow* commandOf(std::string_view text) {
    const auto* const row =
        std::find_if(kCommands.begin(), kCommands.end(), [text](const CommandRow& r) {
            return r.isWhole ? text == r.word : text.starts_with(r.word);
        });
    return row == kCommands.end() ? nullptr : row;
}

std::string crossing(std::string_view screen, std::uint32_t column, std::uint32_t row) {
    std::string text(kCrossing);
    text.append(screen);
    return text + ',' + std::to_string(column) + ',' + std::to_string(row);
}

std::string statusQuery(std::string_view address) {
    std::string text(wordOf(Command::kStatus));
    text.append("\n[control]=").append(address);
    return text.append("\n").append(kStatusSubject).append("\nend");
}

Status status(std::string_view address, unsigned mice, unsigned keyboards, unsigned panels) {
    Status text{};
    std::snprintf(text.data(), text.size(), "[ack]\n[controlled]=%.*s\nusb_link_device=%u%u%u",
                  static_cast<int>(address.size()), address.data(), mice, keyboards, panels);
    return text;
}

}  // namespace wire
