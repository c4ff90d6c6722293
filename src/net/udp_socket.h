#pragma once

#include <netinet/in.h>

#include <cstdint>

#include "base/guarded.h"
#include "base/shared.h"

/// One IPv4 datagram socket.
///
/// Any thread may call any operation, except that opening and closing must not overlap with other
/// use. Failed system calls are reported once on standard error, the operation then returns its
/// failure value; nothing is retried here.
class UDPSocket {
 public:
    UDPSocket() = default;
    ~UDPSocket();
    UDPSocket(const UDPSocket&) = delete;
    UDPSocket& operator=(const UDPSocket&) = delete;

    /// Opens a socket on local port `port` (0: any free one) at every address. A non-zero
    /// `receiveTimeOut` limits receive calls to 35 ms; `nonBlocking` makes RecvFrom wait at most 20
    /// ms; `reuse` shares the port. A descriptor held before is closed. Returns the descriptor, or
    /// -1; the new descriptor stays stored when only a later step failed.
    int CreateUDPServer(unsigned port, unsigned receiveTimeOut, bool nonBlocking, bool reuse);
    void CloseUDPSocket();

    /// Receives one datagram of at most `length` bytes (the rest of a longer one is lost) and keeps
    /// its sender as the peer. Returns the byte count; 0 for an empty datagram and, on a
    /// non-blocking socket, when none came within 20 ms; -1 on failure, also when another thread
    /// took the datagram first.
    long RecvFrom(void* buffer, long length);

    /// As RecvFrom, but tells the caller alone who sent it: for a socket that several threads
    /// receive on. `sender` is written only with a datagram; the peer stays as it is.
    long Receive(void* buffer, long length, sockaddr_in& sender);

    /// Sends one datagram to the stored destination (AddBroadCast) at the port given to
    /// CreateUDPServer. Returns the byte count, or -1.
    int SendTo(const void* buffer, long length);

    /// Sends one datagram to the dotted address `ip`, UDP port `port` (its low 16 bits). Returns
    /// the byte count, or -1; -1 without a system call for a null argument, a negative length and a
    /// text that is no address. Touches nothing but the descriptor.
    int SendTo(const char* ip, unsigned port, const void* buffer, long length);

    /// Prints `buffer` as text, up to its first NUL or `length`, and sends all of it to the peer.
    /// Returns the byte count, or -1 (before any datagram was received, too).
    int EchoTo(const void* buffer, long length);

    /// The sender of the last datagram that RecvFrom or readEmptySocket took; zero before the
    /// first.
    sockaddr_in GetClientSockaddr() const;

    /// Joins the multicast group `group` on the interface (null: the kernel's choice) with loopback
    /// on. Returns 1; or 0, also, in silence, when the interface has no IPv4 address.
    int AddMemberShip(const char* group, const char* interface);
    /// Leaves the group last joined. Returns 1 or 0.
    int DropMemberShip();

    /// What failed before, tried again without a line: a descriptor that is not there or not bound
    /// to `port` gets another in its place (of its options only the shared port); joins the group
    /// on the interface where it is no member, by the interface itself, whatever its address.
    enum class Repair : std::uint8_t { kNotNeeded, kDone, kFailed };
    Repair repairPort(unsigned port);
    Repair repairMemberShip(const char* group, const char* interface);

    /// True when a datagram waits within `milliseconds`, or something else that a receive call
    /// would tell. Without a descriptor it waits as long.
    bool waitForDatagram(int milliseconds) const;

    /// Allows broadcasts and stores the interface's broadcast address as destination of SendTo
    /// (null: 255.255.255.255). Returns non-zero, or 0.
    int AddBroadCast(const char* interface);

    /// Binds the descriptor to the interface's address and `port` (0: any free one). Returns
    /// non-zero, or 0.
    int BindLocalAddr(const char* interface, unsigned port, bool reuse);

    /// Discards what waits on the socket, at most 1024 datagrams, so that it ends even under a
    /// flood. Returns 0, or 1 when the socket cannot be polled.
    int readEmptySocket();

    /// Makes the descriptor non-blocking. Returns 1 or 0.
    int setnonblocking();
    /// Limits receive calls to 15 ms. Returns 0 always.
    int setTimeOut();

    /// Kernel buffer sizes in bytes, as the kernel accounts them; -1 on failure.
    int GetRevBuf();
    int GetSndBuf();
    /// Return 1 or 0.
    int SetRevBuf(int size);
    int SetSndBuf(int size);

    /// Time to live of unicast and of multicast datagrams, in hops; -1 on failure.
    int GetIpTTL();
    int GetMulticastTTL();
    /// Return 1 or 0.
    int SetIpTTL(int ttl);
    int SetMulticastTTL(int ttl);

 private:
    Shared<std::int32_t> descriptor_{-1};
    Guarded<ip_mreq> membership_;
    Guarded<sockaddr_in> own_;  ///< bound address; its address part is also SendTo's destination
    Guarded<sockaddr_in> peer_;
    Shared<bool> nonBlocking_{false};

 public:
    /// Non-zero: the descriptor was connected, and SendTo to the stored destination writes to it.
    Shared<std::int32_t> connected{0};
};
