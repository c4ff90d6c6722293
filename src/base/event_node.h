#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

/// The kernel's event nodes: open, read records, write a record, the keys that are down, axis
/// range.
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
    int error = 0;  ///< the errno of an opening that failed
};

/// Opens the node at `path` (the path prefix applies) for reading and writing, close-on-exec,
/// without a grab; its reads never wait. The caller closes the descriptor.
EventNode openEventNode(const char* path);

/// What one read of a node gave.
struct NodeRead {
    std::size_t count = 0;       ///< whole records
    std::optional<int> failure;  ///< what came behind them: 0 to 15 bytes of a record, or -1
};

/// Reads with one call what the node has, at most as much as `records` holds, and puts the whole
/// records at its beginning. A node that has nothing gives neither records nor a failure.
NodeRead readRecords(const EventNode& node, std::span<InputRecord> records);
inline constexpr int kRecordSize = 16;

/// True when a read of `fd` would give something: a record is there, or the node is gone.
bool hasInput(std::int32_t fd);

/// The keys and buttons that are down, by code (KEY_CNT in input-event-codes.h).
using KeysDown = std::bitset<0x300>;

/// What is down at the node (EVIOCGKEY); nothing when the node cannot tell. The kernel then takes
/// the key records that nobody has read yet for told, so the node is to be read empty before.
std::optional<KeysDown> readKeysDown(int fd);

/// Writes one record with time zero. Returns false when the node did not take it whole.
bool writeRecord(const EventNode& node, std::uint16_t type, std::uint16_t code, std::int32_t value);

/// The largest value of the absolute axis `code` (EVIOCGABS); nothing when the node cannot tell.
std::optional<std::int32_t> readAxisMaximum(int fd, std::uint16_t code);
