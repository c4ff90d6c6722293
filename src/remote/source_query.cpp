#include "remote/source_query.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

#include "base/clock.h"
#include "base/inputevent.h"
#include "base/singleton.h"
#include "base/text.h"
#include "net/dotted_text.h"
#include "net/udp_socket.h"
#include "remote/box_answer.h"
#include "remote/send.h"
#include "remote/wire.h"

namespace {

constexpr std::string_view kRequest = "link";
constexpr std::int64_t kQueryPeriodMicroseconds = 5'000'000;
constexpr unsigned kViPort = 19358;

std::optional<std::string_view> valueOf(std::string_view text, std::string_view key) {
    const std::size_t at = text.find(key);
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    return text.substr(at + key.size());
}

std::optional<ReplyNumber> numberOf(std::string_view text, std::string_view key) {
    const auto rest = valueOf(text, key);
    if (!rest) {
        return std::nullopt;
    }
    const std::string_view digits = rest->substr(0, std::min<std::size_t>(rest->find('&'), 4));
    const bool ended = rest->size() > digits.size() && (*rest)[digits.size()] == '&';
    return ReplyNumber{str2int(std::string(digits)), digits.size() == 4 && !ended};
}

std::optional<PointerMode> modeOf(std::string_view text) {
    const auto rest = valueOf(text, "kvm=");
    if (!rest) {
        return std::nullopt;
    }
    const std::string_view word = rest->substr(0, std::min<std::size_t>(rest->find('&'), 4));
    if (word == "rel") {
        return PointerMode::kRelative;
    }
    return word == "abs" ? PointerMode::kAbsolute : PointerMode::kUnchanged;
}

}  // namespace

unsigned GetViNum(const char* address) {
    std::vector<std::string> parts;
    SplitString(address, parts, ".");
    if (parts.size() != 4) {
        return 0;
    }
    const std::int32_t last = str2int(parts[3]);
    return last >= 1 && last <= 254 ? static_cast<unsigned>(last) : 0;
}

BoxReply parseBoxReply(std::string_view text) {
    return {numberOf(text, "vi_w="), numberOf(text, "vi_h="), modeOf(text)};
}

std::int32_t scaleTruncated(std::int32_t value, float ratio) {
    const double scaled = std::trunc(static_cast<double>(static_cast<float>(value) * ratio));
    constexpr auto kLowest = std::numeric_limits<std::int32_t>::min();
    constexpr auto kHighest = std::numeric_limits<std::int32_t>::max();
    if (!(scaled > kLowest)) {
        return kLowest;
    }
    return scaled < kHighest ? static_cast<std::int32_t>(scaled) : kHighest;
}

std::optional<BoxAnswer> askBox(UDPSocket& socket) {
    const BoxTarget box = currentTarget();
    socket.readEmptySocket();
    if (box.ip.isNone()) {
        return std::nullopt;
    }
    socket.SendTo(box.ip.c_str(), static_cast<unsigned>(wire::kQueryPort + box.portAdd),
                  kRequest.data(), static_cast<long>(kRequest.size()));
    std::array<char, 64> buffer{};
    sockaddr_in sender{};
    const long got = socket.Receive(buffer.data(), static_cast<long>(buffer.size()), sender);
    if (got <= 0) {
        return std::nullopt;
    }
    const std::string_view text(buffer.data(), static_cast<std::size_t>(got));
    return BoxAnswer{box, dottedText(sender.sin_addr), ntohs(sender.sin_port),
                     std::string(text.substr(0, text.find('\0')))};
}

void* viThr(void* /*unused*/) {
    const auto events = Singleton<inputevent_>::instance();
    auto* socket = new UDPSocket;  // lives as long as the process
    socket->CreateUDPServer(kViPort, 1, true, true);
    InputViSocket = socket;
    for (;;) {
        const AddressText box = curIp.copy();
        if (!box.empty() && !box.view().starts_with(AddressText::kNone)) {
            events->TimegetChipVersion();
        }
        sleepMicroseconds(kQueryPeriodMicroseconds);
    }
}
