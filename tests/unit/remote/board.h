#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "app/base/inputevent.h"
#include "app/base/path_prefix.h"
#include "app/base/state.h"
#include "net/udp_socket.h"
#include "remote/wall_map.h"
#include "unit/config/scratch.h"

inline std::string hex(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) {
        std::array<char, 4> pair{};
        std::snprintf(pair.data(), pair.size(), "%02x ", static_cast<unsigned char>(byte));
        text += pair.data();
    }
    return text.substr(0, text.size() - (text.empty() ? 0 : 1));
}

template <std::size_t N>
std::string hex(const std::array<std::uint8_t, N>& bytes) {
    return hex(std::string_view(reinterpret_cast<const char*>(bytes.data()), N));
}

/// What `action` prints on standard output.
inline std::string printedBy(const std::function<void()>& action) {
    testing::internal::CaptureStdout();
    action();
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

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
        sockaddr_in own{};
        own.sin_family = AF_INET;
        own.sin_addr.s_addr = inet_addr(ip.c_str());
        own.sin_port = htons(static_cast<std::uint16_t>(at));
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
    std::string bytes() {
        const std::string got = text();
        return got == "nothing" ? got : hex(got);
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

/// The settings of this process live in a scratch directory.
inline const Scratch& scratchSettings() {
    static const Scratch scratch;
    static const bool once = [] {
        std::filesystem::create_directories(scratch.path("data"));
        setPathPrefix(scratch.path());
        return true;
    }();
    (void)once;
    return scratch;
}

/// One console with the shared state as at start, and an open socket towards the boxes.
class Board : public testing::Test {
 protected:
    Board() {
        scratchSettings();
        for (Flag* flag : {&osdFlag, &clear_flag, &rel_enable, &is_user_ip, &vr_mouse}) {
            *flag = 0;
        }
        for (Guarded<AddressText>* address : {&curIp, &curName, &curOutIp, &localip}) {
            address->set({});
        }
        qtFlag = 1;
        startFlag = 1;
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
    ~Board() override {
        InputSocket = nullptr;
        InputViSocket = nullptr;
        KvmSetSocket = nullptr;
    }

    /// Makes `box` the controlled one.
    static void control(const Box& box) {
        curIp.set(AddressText{box.ip});
        port_add = box.port - 80;
    }
    static void controlUserBox(const Box& box) {
        curIp.set(AddressText{box.ip});
        is_user_ip = 1;
    }
    static void listAsUserBox(const std::string& ip) {
        user_ip.emplace_back(ip);
        user_n = static_cast<std::int32_t>(user_ip.size());
    }
    static void placePointer(std::int32_t x, std::int32_t y) {
        currentInfo.with([=](currentCtl& now) {
            now.pointerX = x;
            now.pointerY = y;
        });
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

    UDPSocket toBoxes;
    inputevent_ events;
};
