#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <net/if.h>
#include <poll.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

#include "control/hotkey_table.h"
#include "input/key_press.h"
#include "input/listener.h"
#include "net/udp_socket.h"

/// Moves the calling thread, once, into a network of its own with only a loopback, so that the
/// OSD's fixed ports are free. False where the machine does not allow it.
inline bool inOwnNetwork() {
    static const bool entered = [] {
        if (unshare(CLONE_NEWNET) != 0 && unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) {
            return false;
        }
        const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        ifreq request{};
        std::strcpy(request.ifr_name, "lo");
        request.ifr_flags = IFF_UP | IFF_LOOPBACK | IFF_RUNNING;
        const bool up = ioctl(fd, SIOCSIFFLAGS, &request) == 0;
        close(fd);
        return up;
    }();
    return entered;
}

/// What was sent, one text a datagram: the receiver's name, a blank, the bytes (a command as text).
using Sent = std::vector<std::string>;

/// A listener whose devices are pipes and whose boxes and OSDs are sockets on loopback.
struct ListenerWorld : testing::Test {
    void SetUp() override {
        if (!inOwnNetwork()) {
            GTEST_SKIP() << "no network namespace of its own";
        }
        listen("osd-command", "127.0.0.1", 41237);
        listen("osd-key", "127.0.0.1", 41238);
        listen("out-command", "127.0.0.9", 41237);
        listen("out-key", "127.0.0.9", 41238);
        listen("base", "127.0.0.31", 8000);
        listen("box", "127.0.0.31", 8031);
        socket_.CreateUDPServer(0, 1, true, false);
        InputSocket = KvmSetSocket = &socket_;
        inputPort = 8000;
        port_add = 31;
        curIp.set(AddressText{"127.0.0.31"});
        curOutIp.set(AddressText{"127.0.0.9"});
        qtFlag = ctrl_3_flag = alt_3_flag = shift_3_flag = 1;
        osdFlag = rel_enable = is_user_ip = 0;
        currentInfo.set({});
        hotkeyinfo_.set({});
        events.hotPlugFlag = 0;
        state.firstKey = false;  // the lights are no matter of these tests
        testing::internal::CaptureStdout();
    }

    void TearDown() override {
        InputSocket = KvmSetSocket = nullptr;
        for (const int fd : opened_) {
            close(fd);
        }
        if (!opened_.empty()) {
            testing::internal::GetCapturedStdout();
        }
    }

    /// What arrived since the last call, receiver by receiver.
    Sent sent() {
        Sent texts;
        for (const Receiver& receiver : receivers_) {
            unsigned char bytes[64];
            for (ssize_t got = 0;
                 (got = recv(receiver.fd, bytes, sizeof bytes, MSG_DONTWAIT)) > 0;) {
                texts.push_back(receiver.name + " " + asText(bytes, static_cast<int>(got)));
            }
        }
        return texts;
    }

    /// Adds a device; returns the end of its pipe that events are written to.
    int add(InputDeviceList& devices) {
        int ends[2] = {-1, -1};
        EXPECT_EQ(pipe(ends), 0);
        opened_.insert(opened_.end(), ends, ends + 2);
        devices.fds[devices.count] = ends[0];
        devices.count = devices.count + 1;
        return ends[1];
    }

    static bool unread(std::int32_t fd) {
        pollfd wait{fd, POLLIN, 0};
        return poll(&wait, 1, 0) == 1;
    }

    /// Writes one event and lets `pass` serve the device; false when the listener has to end.
    bool give(int pipeEnd, bool (*pass)(ListenerState&), std::int32_t fd,
              const InputRecord& record) {
        EXPECT_EQ(write(pipeEnd, &record, sizeof record), kRecordSize);
        FD_ZERO(&state.ready);
        FD_SET(fd, &state.ready);
        return pass(state);
    }

    void press(std::uint16_t code) { handlePress(state, 0, code); }

    static void setPointer(std::int32_t x, std::int32_t y) {
        currentInfo.with([x, y](currentCtl& now) {
            now.pointerX = x;
            now.pointerY = y;
        });
    }

    inputevent_ events;
    ListenerState state{events};

 private:
    struct Receiver {
        std::string name;
        int fd;
    };

    void listen(const char* name, const char* ip, std::uint16_t port) {
        receivers_.push_back({name, socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)});
        opened_.push_back(receivers_.back().fd);
        sockaddr_in address{AF_INET, htons(port), {inet_addr(ip)}, {}};
        EXPECT_EQ(bind(opened_.back(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    }

    static std::string asText(const unsigned char* bytes, int size) {
        if (bytes[0] == 'O' || bytes[0] == 'P' || bytes[0] == 'K') {
            return {bytes, bytes + size};
        }
        std::string text;
        for (int i = 0; i < size; ++i) {
            char digits[4];
            std::snprintf(digits, sizeof digits, "%02X", bytes[i]);
            text += digits;
        }
        return text;
    }

    UDPSocket socket_;
    std::vector<Receiver> receivers_;
    std::vector<int> opened_;
};
