#pragma once

#include <linux/input-event-codes.h>

#include <functional>

#include "input/rule_state.h"
#include "input/sink.h"
#include "unit/fixture.h"

/// Writes down what the rules say: the calls in order, and the lines by themselves.
class WrittenSink : public Sink {
 public:
    explicit WrittenSink(RuleState& state) : state_(state) {}

    /// What was said since the last time, one call behind the other.
    std::string take() { return std::exchange(calls_, ""); }
    std::string takeLines() { return std::exchange(lines_, ""); }

    /// What a command changes.
    std::function<void()> onCommand;

    void toBox(const BoxReport& report) override {
        static constexpr const char* kKinds[] = {"keys ", "base port ", "pointer ", "raw "};
        const auto& bytes = report.bytes;
        const bool keys = bytes[2] == wire::kKeyboardKind;
        say(kKinds[static_cast<int>(report.kind)] + (keys ? keysIn(bytes) : pointerIn(bytes)));
    }
    /// With the modes that are on at that moment.
    void toOsd(OsdPort port, std::span<const std::uint8_t> bytes) override {
        static constexpr const char* kPorts[] = {"here: ", "here keys: ", "out: ", "out keys: "};
        const Modes& modes = state_.modes();
        std::string text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        if (bytes[0] == wire::kMagic0) {
            text = bytes[2] == wire::kKeyboardKind ? keysIn(bytes) : hex(text);
            text += bytes.size() == 12 ? " locks " + std::to_string(bytes[11]) : "";
        }
        say(kPorts[static_cast<int>(port)] + text + (modes.osdFlag ? " +osd" : "") +
            (modes.previewMode ? " +preview" : "") + (modes.kvmMode ? " +kvm" : ""));
    }
    void command(const Command& command) override {
        static constexpr const char* kOrders[] = {"resync", "read lights", "tell lights",
                                                  "let go", "cross ",      "arrow "};
        static constexpr const char* kWays[] = {"left", "right", "up", "down"};
        const bool crosses = command.order >= Order::kCross;
        say(kOrders[static_cast<int>(command.order)] +
            std::string(crosses ? kWays[static_cast<int>(command.direction)] : ""));
        if (onCommand) {
            onCommand();
        }
    }
    void pause(std::int64_t microseconds) override {
        say("pause " + std::to_string(microseconds / 1000));
    }

 protected:
    void print(const char* format, va_list arguments) override {
        std::array<char, 256> text{};
        std::vsnprintf(text.data(), text.size(), format, arguments);
        lines_ += text.data();
    }

 private:
    void say(const std::string& call) { calls_ += (calls_.empty() ? "" : " | ") + call; }
    /// "modifiers+first key"
    static std::string keysIn(std::span<const std::uint8_t> bytes) {
        return hex(std::array{bytes[3]}) + "+" + hex(std::array{bytes[5]});
    }
    /// "buttons at x,y", and the wheel's steps
    static std::string pointerIn(std::span<const std::uint8_t> bytes) {
        const auto wheel = static_cast<std::int8_t>(bytes[wire::kWheelAt]);
        return std::to_string(bytes[wire::kButtonsAt]) + " at " +
               std::to_string(static_cast<std::int16_t>(wire::get16(bytes.data(), wire::kXAt))) +
               "," +
               std::to_string(static_cast<std::int16_t>(wire::get16(bytes.data(), wire::kYAt))) +
               (wheel != 0 ? " wheel " + std::to_string(wheel) : "");
    }

    RuleState& state_;
    std::string calls_;
    std::string lines_;
};

/// The state that the rules share, one box in control, and what they said.
struct RuleWorld : testing::Test {
    RuleWorld() {
        state.box.curIp.assign("10.0.0.31");
        state.box.curOutIp.assign("10.0.0.20");
        state.altTaps = state.shiftTaps = true;
        console.duties.hotPlugFlag = 0;
    }
    void placePointer(std::int32_t x, std::int32_t y) {
        place.with([=](currentCtl& now) { now.pointerX = x, now.pointerY = y; });
    }
    Position pointer() const {
        return place.with([](const currentCtl& now) { return pointerOf(now); });
    }
    /// Switches on the modes whose first letters `on` holds.
    void setModes(const std::string& on) {
        console.modes.osdFlag = on.find('o') != on.npos;
        console.modes.previewMode = on.find('p') != on.npos;
        console.modes.kvmMode = on.find('k') != on.npos;
    }

    ConsoleState console;
    Guarded<currentCtl> place;
    Guarded<HotkeyTable> hotkeys;
    RuleState state{console, place, hotkeys, true, true, true, true, {}, {}};
    WrittenSink sink{state};
};
