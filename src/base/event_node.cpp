#include "base/event_node.h"

#include <fcntl.h>
#include <linux/input.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "base/path_prefix.h"

namespace {

/// As many as the kernel keeps for one reader of a large panel; a keyboard's are 64.
constexpr std::size_t kMostNative = 256;

/// Reads whole objects of a record's layout without interpreting them.
template <class T>
NodeRead readWhole(int fd, std::span<T> objects) {
    const ssize_t got = read(fd, objects.data(), objects.size_bytes());
    if (got < 0) {
        const bool nothing = errno == EAGAIN || errno == EINTR;
        return {0, nothing ? std::nullopt : std::optional(-1)};
    }
    const auto bytes = static_cast<std::size_t>(got);
    const auto rest = static_cast<int>(bytes % sizeof(T));
    NodeRead result{bytes / sizeof(T), std::nullopt};
    if (rest != 0 || got == 0) {
        result.failure = std::min(rest, kRecordSize - 1);
    }
    return result;
}

InputRecord recordOf(const input_event& event) {
    return {static_cast<std::int32_t>(event.input_event_sec),
            static_cast<std::int32_t>(event.input_event_usec), event.type, event.code, event.value};
}

/// A call's result, once no signal interrupts it.
template <class Call>
int uninterrupted(Call call) {
    int result = 0;
    do {
        result = call();
    } while (result < 0 && errno == EINTR);
    return result;
}

template <class T>
bool writeWhole(int fd, const T& object) {
    return write(fd, &object, sizeof(T)) == static_cast<ssize_t>(sizeof(T));
}

static_assert(sizeof(InputRecord) == kRecordSize, "a plain record has no padding");

}  // namespace

EventNode openEventNode(const char* path) {
    EventNode node;
    node.fd =
        uninterrupted([path] { return open(prefixedPath(path).c_str(), O_RDWR | O_CLOEXEC); });
    if (node.fd < 0) {
        node.error = errno;
        return node;
    }
    fcntl(node.fd, F_SETFL, O_RDWR | O_NONBLOCK);
    int version = 0;
    if (uninterrupted([&] { return ioctl(node.fd, EVIOCGVERSION, &version); }) == 0) {
        node.layout = RecordLayout::kNative;
    }
    return node;
}

NodeRead readRecords(const EventNode& node, std::span<InputRecord> records) {
    if (node.layout == RecordLayout::kPlain16) {
        return readWhole(node.fd, records);
    }
    std::array<input_event, kMostNative> events;
    const auto got =
        readWhole(node.fd, std::span(events).first(std::min(records.size(), events.size())));
    std::transform(events.begin(), events.begin() + got.count, records.begin(), recordOf);
    return got;
}

bool hasInput(std::int32_t fd) {
    pollfd wait{fd, POLLIN, 0};
    return poll(&wait, 1, 0) == 1;
}

bool writeRecord(const EventNode& node, std::uint16_t type, std::uint16_t code,
                 std::int32_t value) {
    if (node.layout == RecordLayout::kPlain16) {
        return writeWhole(node.fd, InputRecord{0, 0, type, code, value});
    }
    input_event event{};
    event.type = type;
    event.code = code;
    event.value = value;
    return writeWhole(node.fd, event);
}

std::optional<KeysDown> readKeysDown(int fd) {
    std::array<unsigned char, KeysDown{}.size() / 8> bytes{};
    if (ioctl(fd, EVIOCGKEY(bytes.size()), bytes.data()) < 0) {
        return std::nullopt;
    }
    KeysDown down;
    for (std::size_t code = 0; code < down.size(); ++code) {
        down[code] = (bytes[code / 8] >> (code % 8) & 1) != 0;
    }
    return down;
}

std::optional<std::int32_t> readAxisMaximum(int fd, std::uint16_t code) {
    input_absinfo info{};
    if (ioctl(fd, EVIOCGABS(code), &info) < 0) {
        return std::nullopt;
    }
    return info.maximum;
}
