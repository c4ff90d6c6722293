#include "app/board.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <span>
#include <string>

#include "app/registers.h"
#include "base/file_start.h"
#include "base/path_prefix.h"
#include "base/shell.h"
#include "base/waiting.h"

namespace {

enum class Action : std::uint8_t { kWrite, kSetBits, kClearBits, kWait, kShell };

struct Step {
    Action action;
    std::uint32_t address;  ///< of the register
    std::uint32_t value;    ///< register value, bits, or microseconds
    const char* command = nullptr;
};

constexpr std::array kBoardA = {
    Step{Action::kWrite, 0x120F0170, 0},       Step{Action::kSetBits, 0x12220400, 0x8},
    Step{Action::kClearBits, 0x12220020, 0x8}, Step{Action::kWait, 0, 1'000'000},
    Step{Action::kWrite, 0x120F0170, 1},
};

constexpr std::array kBoardC = {
    Step{Action::kWrite, 0x120F00FC, 0}, Step{Action::kWrite, 0x120F0104, 0},
    Step{Action::kWait, 0, 100'000},     Step{Action::kWrite, 0x120F00FC, 1},
    Step{Action::kWrite, 0x120F0104, 1},
};

constexpr std::array kUnknownBoard = {
    Step{Action::kShell, 0, 0, "himm 0x120F02D8     0x0"}, Step{Action::kWait, 0, 200'000},
    Step{Action::kShell, 0, 0, "himm 0x120F02D8     0x1"}, Step{Action::kWait, 0, 200'000},
    Step{Action::kShell, 0, 0, "himm 0x120F02E0     0x0"}, Step{Action::kWait, 0, 200'000},
    Step{Action::kShell, 0, 0, "himm 0x120F02E0     0x1"}, Step{Action::kWait, 0, 200'000},
};

struct KnownBoard {
    std::string_view name;  ///< what its identifiers begin with
    std::span<const Step> steps;
};

constexpr std::array kBoards = {
    KnownBoard{"BOARDA00001_0001_R1", kBoardA},
    KnownBoard{"BOARDB0002_002_R1", {}},
    KnownBoard{"BOARDC0003_003_R1", kBoardC},
};

/// Null when none of them has this identifier.
const KnownBoard* findBoard(std::string_view identifier) {
    const auto* const board = std::find_if(
        kBoards.begin(), kBoards.end(),
        [identifier](const KnownBoard& known) { return identifier.starts_with(known.name); });
    return board != kBoards.end() ? board : nullptr;
}

void run(const Step& step, BoardAccess& access) {
    switch (step.action) {
        case Action::kWrite:
            access.writeRegister(step.address, step.value);
            break;
        case Action::kSetBits:
            if (const auto old = access.readRegister(step.address)) {
                access.writeRegister(step.address, *old | step.value);
            }
            break;
        case Action::kClearBits:
            if (const auto old = access.readRegister(step.address)) {
                access.writeRegister(step.address, *old & ~step.value);
            }
            break;
        case Action::kWait:
            access.rest(step.value);
            break;
        case Action::kShell:
            access.runShell(step.command);
            break;
    }
}

}  // namespace

std::optional<std::string_view> boardIdentifierIn(std::string_view text) {
    constexpr std::string_view kKey = "\"board\": \"";
    const std::size_t key = text.find(kKey);
    if (key == text.npos) {
        return std::nullopt;
    }
    const std::string_view value = text.substr(key + kKey.size());
    const std::size_t quote = value.find('"');
    return quote == value.npos ? std::nullopt : std::optional(value.substr(0, quote));
}

int readHdVersion(char* out) {
    constexpr std::size_t kTextSize = 256;
    const FileText file = readFileStart(prefixedPath("/version/hardware_info"), kTextSize);
    if (file.state == FileState::kMissing || file.state == FileState::kUnreadable) {
        std::puts("open hardware_info error");
        return 0;
    }
    std::memset(out, 0, 32);
    if (file.text.empty()) {
        return 0;
    }
    const char* const text = file.text.c_str();
    std::printf("read hardware_info:%s\n", text);
    const auto found = boardIdentifierIn(text);
    if (!found) {
        std::puts("no board identifier in hardware_info");
    }
    const std::string_view identifier = found.value_or("");
    if (identifier.size() < kBoardNameSize || findBoard(identifier) != nullptr) {
        out[identifier.copy(out, kBoardNameSize - 1)] = '\0';
    } else {
        std::printf("board identifier of %zu characters is no known board\n", identifier.size());
    }
    std::printf("get hdVersion:%s\n", out);
    return 1;
}

std::optional<std::uint32_t> RealBoardAccess::readRegister(std::uint32_t address) {
    std::uint32_t value = 0;
    return Hi_GetReg(address, &value) == 0 ? std::optional(value) : std::nullopt;
}

void RealBoardAccess::writeRegister(std::uint32_t address, std::uint32_t value) {
    Hi_SetReg(address, value);
}

void RealBoardAccess::runShell(const char* command) { ::runShell(command); }

void RealBoardAccess::rest(std::int64_t microseconds) { sleepMicroseconds(microseconds); }

void bringUpBoard(std::string_view identifier, BoardAccess& access) {
    const KnownBoard* const board = findBoard(identifier);
    const std::span<const Step> steps = board != nullptr ? board->steps : kUnknownBoard;
    for (const Step& step : steps) {
        run(step, access);
    }
}
