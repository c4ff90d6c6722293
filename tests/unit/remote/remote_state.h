#pragma once

#include <arpa/inet.h>
#include <sys/socket.h>

#include <array>
#include <functional>
#include <stdexcept>

#include "base/state.h"
#include "net/udp_socket.h"
#include "remote/console_state.h"
#include "remote/current_screen.h"
#include "remote/handover.h"
#include "remote/wall_map.h"
#include "simulated/fresh_state.h"
#include "unit/fixture.h"

inline constexpr const char* kKeysUp = "57 ab 01 00 00 00 00 00 00 00 00";

/// A loopback address that no other process of the test run uses, for ports that are fixed.
inline std::string ownAddress() {
    const auto pid = static_cast<unsigned>(getpid());
    return "127." + std::to_string(64 + (pid >> 16) % 64) + "." + std::to_string((pid >> 8) % 256) +
           "." + std::to_string(pid % 256);
}

inline int portOf(int fd) {
    sockaddr_in own{};
    socklen_t size = sizeof own;
    return getsockname(fd, reinterpret_cast<sockaddr*>(&own), &size) == 0 ? ntohs(own.sin_port) : 0;
}

/// A receiving socket in place of a box. Loopback delivers at once, so nothing here ever waits.
class Receiver {
 public:
    explicit Receiver(std::string address, int at = 0)
        : ip(std::move(address)), fd_(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        const sockaddr_in own{
            AF_INET, htons(static_cast<std::uint16_t>(at)), {inet_addr(ip.c_str())}, {}};
        if (bind(fd_, reinterpret_cast<const sockaddr*>(&own), sizeof own) != 0) {
            throw std::runtime_error("cannot bind " + ip + " port " + std::to_string(at));
        }
        port = portOf(fd_);
    }
    ~Receiver() { close(fd_); }
    Receiver(const Receiver&) = delete;
    Receiver& operator=(const Receiver&) = delete;

    /// The next datagram that already arrived, "nothing" when none did.
    std::string text() const {
        std::array<char, 256> bytes{};
        const ssize_t got = recv(fd_, bytes.data(), bytes.size(), MSG_DONTWAIT);
        return got < 0 ? "nothing" : std::string(bytes.data(), static_cast<std::size_t>(got));
    }
    /// All that arrived, in hex, one datagram after the other.
    std::string all() const {
        std::string list;
        for (std::string got; (got = text()) != "nothing";) {
            list += (list.empty() ? "" : " | ") + hex(got);
        }
        return list;
    }
    /// Tells `reply` to `portHere` of this machine.
    void answer(const std::string& reply, int portHere) const {
        const sockaddr_in to{
            AF_INET, htons(static_cast<std::uint16_t>(portHere)), {htonl(INADDR_LOOPBACK)}, {}};
        sendto(fd_, reply.data(), reply.size(), 0, reinterpret_cast<const sockaddr*>(&to),
               sizeof to);
    }
    /// The name that leads both reports and queries here while inputPort is 80.
    std::string name() const { return ip + "-" + std::to_string(port - 80); }

    std::string ip;
    int port = 0;

 private:
    int fd_;
};

/// Shared state as at start, a scratch directory for the settings, and an open socket towards the
/// boxes.
class RemoteState : public testing::Test {
 protected:
    RemoteState() {
        std::filesystem::create_directories(root.path("data"));
        freshState();
        toBoxes.CreateUDPServer(0, 1, true, true);
        InputSocket = &toBoxes;
    }
    ~RemoteState() override { InputSocket = InputViSocket = KvmSetSocket = nullptr; }

    /// Changes the box in control; what is down there is let go of.
    static void change(const std::function<void(BoxInControl&)>& by) {
        handOver(
            [&](BoxInControl box) {
                by(box);
                return std::optional(box);
            },
            LetGo::kAlways);
    }
    static void control(const Receiver& receiver) {
        change([&](BoxInControl& box) {
            box.curIp.assign(receiver.ip);
            box.port_add = receiver.port - 80;
        });
    }
    static void placePointer(std::int32_t x, std::int32_t y) {
        currentInfo.with([=](currentCtl& now) { now.pointerX = x, now.pointerY = y; });
    }
    static void placeCell(unsigned x, unsigned y) {
        currentInfo.with([=](currentCtl& now) { now.cellX = x, now.cellY = y; });
    }
    /// "screen x,y cell x,y pointer x,y"
    static std::string place() {
        const currentCtl now = currentInfo.copy();
        std::array<char, 128> text{};
        std::snprintf(text.data(), text.size(), "screen %u,%u cell %u,%u pointer %d,%d", now.outX,
                      now.outY, now.cellX, now.cellY, now.pointerX, now.pointerY);
        return text.data();
    }
    /// "width x height rel mode" of the picture.
    static std::string picture() {
        const BoxInControl box = boxInControl();
        return std::to_string(box.XRIGHT) + "x" + std::to_string(box.YDOWN) + " rel " +
               std::to_string(box.rel_enable);
    }
    /// Builds a wall of `lines` in silence and makes the screen named `name` the current one.
    static void buildWall(std::initializer_list<std::string> lines, const std::string& name) {
        printedBy([&] {
            outInfo_.set({});
            for (const std::string& line : lines) {
                CreatOutIpMap(line);
            }
            setInputPort(80);
            getCurrentInfo(nullptr, name);
        });
    }

    const Root root;
    UDPSocket toBoxes;
    ConsoleState console;
};
