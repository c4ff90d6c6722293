#include "input/key_rules.h"

#include <linux/input-event-codes.h>

#include <algorithm>

#include "input/key_forward.h"
#include "remote/lights.h"
#include "remote/send.h"

namespace {

constexpr std::uint8_t kNumLockUsage = 0x53;
constexpr std::uint8_t kCapsLockUsage = 0x39;
constexpr std::uint8_t kEscapeUsage = 0x29;
constexpr std::uint8_t kLeftCtrl = 0x01;
constexpr std::uint8_t kRightCtrl = 0x10;

struct Arrow {
    std::uint8_t usage;
    Direction direction;
};
/// HID usages of the arrow keys.
constexpr Arrow kArrows[] = {{0x50, Direction::kLeft},
                             {0x4F, Direction::kRight},
                             {0x52, Direction::kUp},
                             {0x51, Direction::kDown}};

}  // namespace

std::optional<std::size_t> KeyRules::serve(const KeyEvent& event) {
    const InputRecord& record = event.record;
    sink_.keyLine("type:%d code:%d value:%d\n", int{record.type}, int{record.code}, record.value);
    if (record.type == EV_LED) {
        takeLed(event);
    }
    if (record.type != EV_KEY) {
        return std::nullopt;
    }
    state_.console.lights.ledKeyFd.set(event.fd);
    if (firstKey_) {
        sink_.command({Order::kReadLights});
        firstKey_ = false;
    }
    if (record.value == 1) {
        return press(event);
    }
    if (record.value == 0) {
        release(event);
    }
    return std::nullopt;  // a repeat is the computer's own affair
}

void KeyRules::takeLed(const KeyEvent& event) {
    if (event.record.code == LED_CAPSL) {
        state_.console.lights.capsLockOn = static_cast<std::uint8_t>(event.record.value != 0);
    } else if (event.record.code != LED_NUML) {
        sink_.line("not support other led event\n");
    }
    sink_.line("fd :%d %s led get code  %d,value  %d\n", event.fd, event.name,
               int{event.record.code}, event.record.value);
}

/// The order of the tests; everything else about a press stands in the functions that it names.
std::optional<std::size_t> KeyRules::press(const KeyEvent& event) {
    if (!takeKey(event)) {
        return std::nullopt;
    }
    noteLockKey();
    if (!state_.osdIsHere && isEscape()) {
        taps_.countEscape(event.now);
    }
    if (!state_.modes().areOff()) {
        toOsd();
        return std::nullopt;
    }
    if (state_.keys.modifiers() != 0 && state_.keys.firstKey() != 0) {
        return groupKey();
    }
    if (!taps_.takeTap(event.now)) {
        forwardSingleKey();
    }
    return std::nullopt;
}

/// Updates the report; false for a key that is not handled.
bool KeyRules::takeKey(const KeyEvent& event) {
    held_.press(event.slot, event.record.code);
    state_.keys.keyName.fill('\0');
    const int length = OnKeyDown(state_.console.lights, event.record.code, state_.keys.bytes.data(),
                                 0, 0, 0, state_.keys.keyName.data());
    sink_.keyLine("check event:%s  %s key press-->%s\n", event.name, event.name,
                  state_.keys.keyName.data());
    if (resyncIsDue(state_.console, state_.box)) {
        sink_.line("osd change signal need locks sync\n");
        sink_.command({Order::kResync});
    }
    return length != 0;
}

void KeyRules::noteLockKey() {
    const std::uint8_t usage = state_.keys.firstKey();
    if (usage == kNumLockUsage || usage == kCapsLockUsage) {
        lockKeyPressed_ = true;
        if (state_.modes().osdFlag) {
            sink_.command({Order::kReadLights});
        }
    }
}

/// F13 starts and stops what runs at the box; its release goes to the base port, without the
/// offset.
void KeyRules::forwardSingleKey() {
    if (!state_.box.isNone()) {
        if (state_.keys.firstKey() == kEscapeUsage) {
            sink_.keyLine("send ESC to input\n");
        }
        forwardPress(state_, sink_);
        if (state_.keys.name().starts_with("F13") && !state_.box.is_user_ip) {
            sink_.pause(kAfterKeyMicroseconds);
            sink_.toBox(BoxReport::keys(wire::kKeyRelease, BoxReport::Kind::kKeysAtBasePort));
            sink_.keyLine("send run/stop\n");
        }
    }
    taps_.reset();
}

void KeyRules::release(const KeyEvent& event) {
    sink_.line("key up\n");
    held_.release(event.slot, event.record.code);
    const KeyUp up =
        takeKeyUp(event.record.code, state_.keys.bytes.data(), state_.releaseEverything);
    if (up.line != nullptr) {
        sink_.keyLine("%s\n", up.line);
    }
    if (up.length != 0) {
        tellRelease();
    }
    syncLockKey(event.record.code);
    if (held_.count() == 0) {
        state_.keys.clear();
        groupText_.fill('\0');
        firstKey_ = false;
    }
}

void KeyRules::tellRelease() {
    // KVM mode does not count here: in it, releases go to the box.
    const auto isOsds = [this] { return state_.modes().osdFlag || state_.modes().previewMode; };
    const bool toOsd = isOsds();
    if (toOsd || hotkeySent_) {
        sink_.toOsd(OsdPort::kHereKeys, state_.keys.forBox());
    }
    if (!toOsd) {
        sink_.toBox(BoxReport::keys(state_.keys.forBox()));
        if (isOsds()) {
            sink_.command({Order::kLetGo});  // opened meanwhile: the rest will come up there
        }
    }
}

/// After a lock key went up, the box's lights follow the keyboard's.
void KeyRules::syncLockKey(std::uint16_t code) {
    const bool lockKey = code == KEY_NUMLOCK || code == KEY_CAPSLOCK;
    if (!lockKey || !lockKeyPressed_ || !state_.modes().areOff() || state_.box.is_user_ip) {
        return;
    }
    sink_.command({Order::kTellLights});
    state_.keys.clear();
    if (code == KEY_NUMLOCK) {
        sink_.line("-----------------keynum  sync----------------\n");
    } else {
        sink_.line("-----------------keycapslock  sync----------------\n");
    }
}

// A key while the OSD, the preview or the KVM mode is on.

void KeyRules::toOsd() {
    if (!state_.osdIsHere) {
        toOutputOsd();
    } else if (isEscape()) {
        leaveOsd();
    } else {
        sink_.toOsd(OsdPort::kHereKeys, state_.keys.forBox());
    }
}

/// Escape: the modes are left before the OSD is told.
void KeyRules::leaveOsd() {
    Modes& modes = state_.modes();
    const bool preview = modes.previewMode != 0;
    modes.previewMode = 0;
    modes.osdFlag = 0;
    sink_.toOsd(OsdPort::kHereCommands, bytesOf(preview ? previewQ : osdQ));
    sink_.line(preview ? "preview quit\n" : "osd quit\n");
}

/// Keys for the OSD of an output box carry the lock lights as their 12th byte.
void KeyRules::toOutputOsd() {
    const Lights& lights = state_.console.lights;
    std::uint8_t locks = lights.capsLockOn;
    if (lights.numLockOn) {
        sink_.line("num lock\n");
        locks |= 0x02;
    }
    state_.keys.bytes[wire::kLocksAt] = locks;
    const char* const out = state_.box.curOutIp.c_str();
    if (isEscape()) {
        sink_.line("out:%s in osd get ESC\n", out);
    }
    sink_.toOsd(OsdPort::kOutputKeys, state_.keys.bytes);
    if (!isEscape()) {
        sink_.keyLine("send %s kvm set hotkey %s lock 0x%x\n", out, state_.keys.keyName.data(),
                      unsigned{locks});
    }
}

// A modifier and a key together: the hotkey table, the arrows that move control, then the box.

std::size_t KeyRules::groupKey() {
    groupText_.fill('\0');
    GetChar(state_.keys.bytes.data(), groupText_.data());
    sink_.keyLine("get groupkey-->%s\n", groupText_.data());
    const HotkeyMatch match = findHotkey(state_.hotkeys, groupText_.data());
    if (match.found) {
        giveToOsd();
    }
    moveByArrow();
    if (!match.found) {
        forwardGroupKey();
    }
    return match.index + 1;  // the look-up's index goes on as the keyboard's
}

void KeyRules::giveToOsd() {
    const AddressText screen =
        state_.place.with([](const currentCtl& now) { return now.screen.name; });
    sink_.keyLine("get kvm hotkey-->%s  sendto %s\n", groupText_.data(), screen.c_str());
    sink_.toOsd(state_.osdIsHere ? OsdPort::kHereKeys : OsdPort::kOutputCommands,
                state_.keys.forBox());
    sink_.toBox(BoxReport::keys(wire::kKeyRelease));
    hotkeySent_ = true;
    groupText_.fill('\0');
}

void KeyRules::moveByArrow() {
    if (state_.keys.modifiers() != kLeftCtrl && state_.keys.modifiers() != kRightCtrl) {
        return;
    }
    const auto* const arrow =
        std::find_if(std::begin(kArrows), std::end(kArrows),
                     [this](const Arrow& row) { return row.usage == state_.keys.firstKey(); });
    if (arrow != std::end(kArrows)) {
        sink_.command({Order::kCrossByArrow, arrow->direction});
    }
}

void KeyRules::forwardGroupKey() {
    if (state_.box.isNone()) {
        return;
    }
    if (hotkeySent_) {
        hotkeySent_ = false;
        return;
    }
    sink_.keyLine("0x%x 0x%x\n", unsigned{state_.keys.modifiers()},
                  unsigned{state_.keys.firstKey()});
    forwardPress(state_, sink_);
    sink_.pause(kAfterKeyMicroseconds);
    groupText_.fill('\0');
}
