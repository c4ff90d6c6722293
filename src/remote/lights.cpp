#include "remote/lights.h"

#include <cstdio>

#include "base/led_bits.h"
#include "base/waiting.h"
#include "remote/picture.h"
#include "remote/send.h"
#include "remote/wire.h"

namespace {

constexpr std::int64_t kLedSettleMicroseconds = 50'000;
constexpr std::uint32_t kNumLockBit = 1U << 0;   // LED_NUML
constexpr std::uint32_t kCapsLockBit = 1U << 1;  // LED_CAPSL

void tellLights(bool capsLock, bool numLock) {
    const std::string text = wire::lights(capsLock, numLock);
    tellBox([&text](const BoxInControl& box) {
        Message message;
        message.add({box.curIp, box.port(), bytesOf(text)});
        return message;
    });
}

/// Lights and query of the box that got control with the handover `serial`; both are due again when
/// control moved on meanwhile, for they may have gone to another.
void tellAndAsk(ConsoleState& state, std::uint64_t serial) {
    syncLed(state.lights, true);
    queryBox(state.duties);
    if (boxInControl().serial != serial) {
        state.duties.hotPlugFlag = 1;
    }
}

}  // namespace

int syncLed(Lights& lights, bool send) {
    const auto bits = lights.ledKeyFd.with([](const std::int32_t& fd) -> std::int64_t {
        return fd >= 0 ? static_cast<std::int64_t>(readLedBits(fd)) : -1;
    });
    if (bits < 0) {
        std::puts("not get act key or not input ip");
        return 0;
    }
    const auto leds = static_cast<std::uint32_t>(bits);
    std::printf("get buff:0x%x\n", leds);
    const bool capsLock = (leds & kCapsLockBit) != 0;
    const bool numLock = (leds & kNumLockBit) != 0;
    lights.capsLockOn = static_cast<std::uint8_t>(capsLock);
    lights.numLockOn = static_cast<std::uint8_t>(numLock);
    if (send) {
        tellLights(capsLock, numLock);
    }
    sleepMicroseconds(kLedSettleMicroseconds);
    return 1;
}

void queryBox(Duties& duties) {
    if (boxInControl().is_user_ip) {
        return;  // it has got control meanwhile; its size is fixed
    }
    duties.queryInProgress = 0;
    getChipVersion();
    duties.queryInProgress = 1;
}

void bringBoxUpToDate(ConsoleState& state) {
    const BoxInControl box = boxInControl();
    if (box.isNone() || box.is_user_ip) {
        return;
    }
    tellAndAsk(state, box.serial);
}

bool resyncIsDue(const ConsoleState& state, const BoxInControl& box) {
    return state.duties.hotPlugFlag && state.modes.areOff() && !box.is_user_ip;
}

void resync(ConsoleState& state) {
    state.duties.hotPlugFlag = 0;
    tellAndAsk(state, boxInControl().serial);
}
