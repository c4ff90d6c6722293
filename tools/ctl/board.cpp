#include "ctl/board.h"

#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cstdio>

#include "base/text.h"
#include "words/message.h"

namespace ctl {
namespace {

/// A line that tells the box in control, and what stands before and behind the box in it.
struct TellingLine {
    std::string_view head;
    std::string_view before;
    std::string_view behind;  ///< empty: it is the line's last word
};
constexpr std::array<TellingLine, 6> kTellingLines{{
    {"get ip:", "get ip:", " port:"},  // the box answers, every 5 s
    {"get new", "->Ip:", ""},
    {"get(0x", "--->", ""},
    {"get current ip-->", "-->", ""},
    {"kvmset get curName=", "curIp=", ""},
    {"stop kvm", "", ""},
}};

std::optional<LastBox> toldBy(std::string_view line) {
    for (const TellingLine& row : kTellingLines) {
        const std::size_t at = line.rfind(row.before);
        if (!line.starts_with(row.head) || at == std::string_view::npos) {
            continue;
        }
        const std::string_view rest = line.substr(at + row.before.size());
        const std::string_view box = row.before.empty()   ? "0.0.0.0"
                                     : row.behind.empty() ? rest
                                                          : rest.substr(0, rest.find(row.behind));
        if (!box.empty()) {
            return LastBox{std::string(box), std::string(line)};
        }
    }
    return std::nullopt;
}

std::string counted(const std::string& number, const char* one, const char* more) {
    return number == "0" ? std::string("no ") + one : number + ' ' + (number == "1" ? one : more);
}

}  // namespace

DeviceCount deviceCount(std::string_view status) {
    const words::Message message =
        words::decode({reinterpret_cast<const std::uint8_t*>(status.data()), status.size()});
    DeviceCount count;
    for (const words::Field& field : message.fields) {
        for (auto [name, value] :
             {std::pair("mice", &count.mice), std::pair("keyboards", &count.keyboards),
              std::pair("panels", &count.panels)}) {
            if (field.name == name) {
                *value = field.value;
            }
        }
    }
    count.digits = status.substr(status.rfind('=') + 1);
    return count;
}

std::string inWords(const DeviceCount& count) {
    if (count.mice.empty()) {
        return "mice, keyboards and touch panels together: " + count.digits;
    }
    return counted(count.mice, "mouse", "mice") + ", " +
           counted(count.keyboards, "keyboard", "keyboards") + ", " +
           counted(count.panels, "touch panel", "touch panels");
}

std::optional<LastBox> lastBox(std::string_view log) {
    while (!log.empty()) {
        log = log.substr(0, log.find_last_not_of('\n') + 1);
        const std::size_t start = log.rfind('\n') + 1;
        if (auto told = toldBy(log.substr(start))) {
            return told;
        }
        log = log.substr(0, start);
    }
    return std::nullopt;
}

bool isBound(std::string_view procNetUdp, int port) {
    std::array<char, 8> wanted{};
    std::snprintf(wanted.data(), wanted.size(), ":%04X", static_cast<unsigned>(port));
    std::vector<std::string> lines;
    SplitString(std::string(procNetUdp), lines, "\n");
    return std::any_of(lines.begin(), lines.end(), [&](const std::string& line) {
        // "  sl  local_address rem_address": the first colon is that behind the number of the line.
        const std::size_t local = line.find(':', line.find(':') + 1);
        return local != std::string::npos && line.compare(local, 5, wanted.data()) == 0;
    });
}

std::optional<std::string> outputOf(const char* command) {
    std::FILE* const program = popen(command, "re");
    if (program == nullptr) {
        return std::nullopt;
    }
    constexpr std::size_t kMost = 4U << 20;
    std::string text;
    std::array<char, 4096> part{};
    while (text.size() < kMost) {
        const std::size_t got = std::fread(part.data(), 1, part.size(), program);
        if (got == 0) {
            break;
        }
        text.append(part.data(), got);
    }
    constexpr int kNoSuchProgram = 127;
    return WEXITSTATUS(pclose(program)) == kNoSuchProgram ? std::nullopt : std::optional(text);
}

}  // namespace ctl
