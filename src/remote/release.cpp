#include <cstdio>

#include "base/clock.h"
#include "base/inputevent.h"
#include "remote/select_input.h"
#include "remote/send.h"
#include "remote/wire.h"

/// Letting go of a box, and the lock lights.

namespace {

constexpr std::int64_t kLedSettleMicroseconds = 50'000;
constexpr std::uint32_t kNumLockBit = 1U << 0;   // LED_NUML
constexpr std::uint32_t kCapsLockBit = 1U << 1;  // LED_CAPSL

}  // namespace

inputevent_::inputevent_() : keyReleaseReport(wire::kKeyRelease) { FD_ZERO(&readSet); }

int inputevent_::releaseKey() {
    sendToCurrentBox(keyReleaseReport);
    return 1;
}

int inputevent_::releaseInput(const char* ip) {
    const AddressText box{ip};
    const BoxTarget now = currentTarget();
    if (now.user) {
        user_send_mk(kKeyboard, nullptr, keyReleaseReport.data());
        return 1;
    }
    wire::Absolute parked = wire::kPointerRelease;
    wire::put16(parked.data(), wire::kXAt, XRIGHT);
    sendToBox(box, now.port, parked);
    sendToBox(box, now.port, keyReleaseReport);
    return 1;
}

int inputevent_::sendRelease() {
    wire::Absolute report = wire::absolute(0, 0, 0, 0);
    getInputMouseLocation(report.data());
    // The reverse of releaseInput's test: the user-list form goes to the boxes that are not listed.
    if (!is_user_ip) {
        user_send_mk(kKeyboard, nullptr, keyReleaseReport.data());
    } else {
        sendToCurrentBox(report);
        sendToCurrentBox(keyReleaseReport);
    }
    return 0;
}

int inputevent_::syncLed(bool send) {
    const auto bits = ledKeyFd.with([](const std::int32_t& fd) -> std::int64_t {
        return fd > 0 ? static_cast<std::int64_t>(readLedBits(fd)) : -1;
    });
    if (bits < 0) {
        std::puts("not get act key or not input ip");
        return 0;
    }
    const auto leds = static_cast<std::uint32_t>(bits);
    std::printf("get buff:0x%x\n", leds);
    const bool capsLock = (leds & kCapsLockBit) != 0;
    const bool numLock = (leds & kNumLockBit) != 0;
    capsLockOn = static_cast<std::uint8_t>(capsLock);
    numLockOn = static_cast<std::uint8_t>(numLock);
    if (send) {
        sendToCurrentBox(bytesOf(wire::lights(capsLock, numLock)));
    }
    sleepMicroseconds(kLedSettleMicroseconds);
    return 1;
}

int inputevent_::MouseTo(int x, int y) {
    releaseInput(curIp.copy().c_str());
    const bool onWall = outInfo_.with([&](const outInf& wall) {
        return x >= 0 && y >= 0 && static_cast<unsigned>(x) < wall.columns &&
               static_cast<unsigned>(y) < wall.rows;
    });
    if (!onWall) {
        std::printf("mouset to location error->(%d,%d)\n", x, y);
        return 0;
    }
    const unsigned outKey = gridKey(static_cast<unsigned>(x), static_cast<unsigned>(y));
    getCurrentInfo_(&outKey, true);
    if (selectInputByCommand(*this)) {
        bringBoxUpToDate(*this);
    } else {
        std::puts("error can not get input ip");
    }
    currentInfo.with([](currentCtl& current) {
        current.pointerX = 100;
        current.pointerY = 100;
    });
    return 1;
}
