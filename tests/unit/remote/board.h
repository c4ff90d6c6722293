#pragma once

#include <arpa/inet.h>
#include <sys/socket.h>

#include <array>
#include <stdexcept>

#include "base/inputevent.h"
#include "base/state.h"
#include "net/udp_socket.h"
#include "remote/wall_map.h"
#include "unit/fixture.h"

inline constexpr const char* kKeysUp = "57 ab 01 00 00 00 00 00 00 00 00";

/// A loopback address that no other process of the test run uses, for ports that are fixed.
inline std::string ownAddress() {
    const auto pid = static_cast<unsigned>(getpid());
    return "127." + std::to_string(64 + (pid >> 16) % 64) + "." + std::to_string((pid >> 8) % 256) +
           "." + std::to_string(pid % 256);
}

/// A receiving socket in place of a box. Loopback delivers at once, so nothing here ever waits.
class Box {
 public:
    explicit Box(std::string address, int at = 0)
        : ip(std::move(address)), fd_(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in own{
            AF_INET, htons(static_cast<std::uint16_t>(at)), {inet_addr(ip.c_str())}, {}};
        socklen_t size = sizeof own;
        if (bind(fd_, reinterpret_cast<sockaddr*>(&own), size) != 0 ||
            getsockname(fd_, reinterpret_cast<sockaddr*>(&own), &size) != 0) {
            throw std::runtime_error("cannot bind " + ip + " port " + std::to_string(at));
        }
        port = ntohs(own.sin_port);
    }
    ~Box() { close(fd_); }
    Box(const Box&) = delete;
    Box& operator=(const Box&) = delete;

    /// The next datagram that already arrived, "nothing" when none did.
    std::string text() {
        std::array<char, 256> bytes{};
        socklen_t size = sizeof sender_;
        const ssize_t got = recvfrom(fd_, bytes.data(), bytes.size(), MSG_DONTWAIT,
                                     reinterpret_cast<sockaddr*>(&sender_), &size);
        return got < 0 ? "nothing" : std::string(bytes.data(), static_cast<std::size_t>(got));
    }
    /// All that arrived, in hex, one datagram after the other.
    std::string all() {
        std::string list;
        for (std::string got; (got = text()) != "nothing";) {
            list += (list.empty() ? "" : " | ") + hex(got);
        }
        return list;
    }
    /// Answers the sender of the last datagram that `asked` took.
    void answer(const std::string& reply, const Box& asked) const {
        sendto(fd_, reply.data(), reply.size(), 0,
               reinterpret_cast<const sockaddr*>(&asked.sender_), sizeof asked.sender_);
    }
    /// The name that leads both reports and queries here while inputPort is 80.
    std::string name() const { return ip + "-" + std::to_string(port - 80); }

    std::string ip;
    int port = 0;

 private:
    int fd_;
    sockaddr_in sender_{};
};

/// One console with the shared state as at start, a scratch directory for its settings, and an open
/// socket towards the boxes.
class Board : public testing::Test {
 protected:
    Board() {
        std::filesystem::create_directories(root.path("data"));
        for (Flag* flag : {&osdFlag, &clear_flag, &rel_enable, &is_user_ip, &vr_mouse}) {
            *flag = 0;
        }
        for (Guarded<AddressText>* address : {&curIp, &curName, &curOutIp, &localip}) {
            address->set({});
        }
        qtFlag = startFlag = 1;
        inputPort = 80;
        port_add = 0;
        user_ip.clear();
        user_n = 0;
        XRIGHT = 1920;
        YDOWN = 1080;
        vi_info.set({});
        currentInfo.set({});
        outInfo_.set({});
        toBoxes.CreateUDPServer(0, 1, true, true);
        InputSocket = &toBoxes;
    }
    ~Board() override { InputSocket = InputViSocket = KvmSetSocket = nullptr; }

    /// Makes `box` the controlled one.
    static void control(const Box& box) {
        curIp.set(AddressText{box.ip});
        port_add = box.port - 80;
    }
    static void listAsUserBox(const std::string& ip) {
        user_ip.emplace_back(ip);
        user_n = static_cast<std::int32_t>(user_ip.size());
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
    /// Builds a wall of `lines` in silence and makes the screen named `name` the current one.
    static void buildWall(std::initializer_list<std::string> lines, const std::string& name) {
        printedBy([&] {
            for (const std::string& line : lines) {
                CreatOutIpMap(line);
            }
            getCurrentInfo(nullptr, name);
        });
    }

    const Root root;
    UDPSocket toBoxes;
    inputevent_ events;
};
