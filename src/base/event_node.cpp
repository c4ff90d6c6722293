#include "base/event_node.h"

#include <fcntl.h>
#include <linux/input.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cstring>

#include "base/path_prefix.h"

namespace {

/// Reads or writes one whole object without interpreting it.
template <class T>
int readWhole(int fd, T& object) {
    std::array<unsigned char, sizeof(T)> bytes{};
    const ssize_t got = read(fd, bytes.data(), bytes.size());
    if (got == static_cast<ssize_t>(sizeof(T))) {
        std::memcpy(&object, bytes.data(), sizeof(T));
        return kRecordSize;
    }
    return got < 0 ? -1 : static_cast<int>(got < kRecordSize ? got : kRecordSize - 1);
}

template <class T>
bool writeWhole(int fd, const T& object) {
    return write(fd, &object, sizeof(T)) == static_cast<ssize_t>(sizeof(T));
}

static_assert(sizeof(InputRecord) == kRecordSize, "a plain record has no padding");

}  // namespace

EventNode openEventNode(const char* path) {
    EventNode node;
    node.fd = open(prefixedPath(path).c_str(), O_RDWR | O_CLOEXEC);
    int version = 0;
    if (node.fd >= 0 && ioctl(node.fd, EVIOCGVERSION, &version) == 0) {
        node.layout = RecordLayout::kNative;
    }
    return node;
}

int readRecord(const EventNode& node, InputRecord& record) {
    if (node.layout == RecordLayout::kPlain16) {
        return readWhole(node.fd, record);
    }
    input_event event{};
    const int got = readWhole(node.fd, event);
    if (got == kRecordSize) {
        record = {static_cast<std::int32_t>(event.input_event_sec),
                  static_cast<std::int32_t>(event.input_event_usec), event.type, event.code,
                  event.value};
    }
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

std::optional<std::int32_t> readAxisMaximum(int fd, std::uint16_t code) {
    input_absinfo info{};
    if (ioctl(fd, EVIOCGABS(code), &info) < 0) {
        return std::nullopt;
    }
    return info.maximum;
}
