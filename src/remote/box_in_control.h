#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "base/address_text.h"
#include "base/function_ref.h"

/// Which input box has control, and all that is true of it: one value under one guard.
///
/// Whoever sends takes one copy and both composes and addresses the report from it. The value
/// changes in one step, in two places: the handover (handover.h) and the picture (picture.cpp).
///
/// Order of guards, where a step needs more than one: the box in control, then currentInfo, then
/// vi_info.

inline constexpr std::int32_t kMaxPort = 65535;
inline constexpr std::int32_t kDefaultInputPort = 80;
inline constexpr std::int32_t kDefaultWidth = 1920;
inline constexpr std::int32_t kDefaultHeight = 1080;

struct BoxInControl {
    AddressText curIp;                    ///< its address; "0.0.0.0" or empty: none has control
    AddressText curName;                  ///< its name in the map
    AddressText curOutIp;                 ///< the output box in use
    std::int32_t inputPort = 0;           ///< UDP port of the input boxes, 0 to 65535
    std::int32_t port_add = 0;            ///< offset of this box's ports, 0 to 65535
    bool is_user_ip = false;              ///< one of the user address list
    bool rel_enable = false;              ///< takes relative pointer reports
    bool relativeNext = false;            ///< will do so after one last absolute report
    bool ended = false;                   ///< the process ends: no box gets control any more
    std::int32_t XRIGHT = kDefaultWidth;  ///< width of its picture in pixels
    std::int32_t YDOWN = kDefaultHeight;  ///< and its height
    std::uint64_t serial = 0;             ///< of the handover that gave it control

    bool isNone() const { return curIp.isNone(); }
    std::int32_t port() const { return inputPort + port_add; }

    /// True when reports to both go to the same address and ports; a user-list box gets some at its
    /// own port and some (a panel's) at inputPort.
    bool isSameBox(const BoxInControl& other) const;
};

/// One copy. Any thread.
BoxInControl boxInControl();

/// One datagram to a box.
struct Datagram {
    static constexpr std::size_t kMostBytes = 32;

    AddressText ip;
    std::int32_t port = 0;  ///< its low 16 bits count
    std::array<std::uint8_t, kMostBytes> bytes{};
    std::size_t size = 0;

    Datagram() = default;
    /// Takes at most kMostBytes of `content`.
    Datagram(const AddressText& to, std::int32_t at, std::span<const std::uint8_t> content);

    std::span<const std::uint8_t> content() const { return std::span(bytes).first(size); }
    bool goesWhere(const Datagram& other) const { return ip == other.ip && port == other.port; }
};

/// What one step sends: nothing, one datagram or two.
class Message {
 public:
    static constexpr std::size_t kMost = 2;

    /// Adds a datagram; one to "0.0.0.0" or an empty address, and a third, are left out.
    void add(const Datagram& datagram);

    bool empty() const { return size_ == 0; }
    std::size_t size() const { return size_; }
    const Datagram& operator[](std::size_t i) const { return datagrams_[i]; }
    const Datagram* begin() const { return datagrams_.data(); }
    const Datagram* end() const { return datagrams_.data() + size_; }

 private:
    std::array<Datagram, kMost> datagrams_{};
    std::size_t size_ = 0;
};
using Compose = FunctionRef<Message(const BoxInControl&)>;

/// Sends what `compose` makes of the box in control and returns the copy that it was made from. The
/// copy, and the note of what the box is about to be told, are one step; if the box was let go of
/// before the datagram had left, what it pressed is let go of once more. `compose` runs under the
/// guard: it neither waits, prints nor calls out. Nothing is sent to "0.0.0.0" or an empty address.
/// Any thread.
BoxInControl tellBox(Compose compose);

/// Sends the releases again that could not leave (no buffer, no route), unless their box was told
/// something new since. Any thread; the supervisor once a second.
void sendWhatIsOwed();
