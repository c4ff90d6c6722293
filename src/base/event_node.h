#pragma once

#include <cstdint>
#include <optional>

/// The kernel's event nodes: open, read a record, write a record, lock lights, axis range.
///
/// A record has 16 bytes on FIFOs, sockets and for a 32-bit process; a genuine evdev node under a
/// 64-bit process delivers the kernel's 24-byte `struct input_event`. Which it is is learnt once,
/// at open, and hidden here. All functions may be called from any thread.

/// One input event (kernel: include/uapi/linux/input.h).
struct InputRecord {
    std::int32_t seconds = 0;
    std::int32_t microseconds = 0;
    std::uint16_t type = 0;
    std::uint16_t code = 0;
    std::int32_t value = 0;
};

enum class RecordLayout : std::uint8_t {
    kPlain16,  ///< s32 s, s32 us, u16 type, u16 code, s32 value, in the machine's byte order
    kNative,   ///< struct input_event of the running kernel and process
};

struct EventNode {
    int fd = -1;  ///< -1 when the node did not open
    RecordLayout layout = RecordLayout::kPlain16;
};

/// Opens the node at `path` (the path prefix applies) for reading and writing, close-on-exec,
/// blocking, without a grab. The caller closes the descriptor.
EventNode openEventNode(const char* path);

/// Reads one record. Returns the bytes of a whole record (16, whatever the node's layout), fewer
/// when the read came back short, or -1. `record` is written only on a whole one.
int readRecord(const EventNode& node, InputRecord& record);
inline constexpr int kRecordSize = 16;

/// True when a read of `fd` would not wait: a record is there, or the node is gone.
bool hasInput(std::int32_t fd);

/// Writes one record with time zero. Returns false when the node did not take it whole.
bool writeRecord(const EventNode& node, std::uint16_t type, std::uint16_t code, std::int32_t value);

/// The largest value of the absolute axis `code` (EVIOCGABS); nothing when the node cannot tell.
std::optional<std::int32_t> readAxisMaximum(int fd, std::uint16_t code);
