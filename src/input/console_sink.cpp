#include "input/console_sink.h"

#include "base/waiting.h"
#include "remote/edge_crossing.h"
#include "remote/handover.h"
#include "remote/lights.h"
#include "remote/send.h"

void ConsoleSink::toBox(const BoxReport& report) { sendReport(report, state_.console.motion); }

void ConsoleSink::toOsd(OsdPort port, std::span<const std::uint8_t> bytes) {
    const bool here = port == OsdPort::kHereCommands || port == OsdPort::kHereKeys;
    const bool keys = port == OsdPort::kHereKeys || port == OsdPort::kOutputKeys;
    sendToOsd(here ? AddressText{AddressText::kThisMachine} : state_.box.curOutIp,
              keys ? wire::kOsdKeyPort : wire::kOsdCommandPort, bytes);
}

void ConsoleSink::command(const Command& command) {
    lines_.print();
    switch (command.order) {
        case Order::kResync:
            resync(state_.console);
            break;
        case Order::kReadLights:
            syncLed(state_.console.lights, false);
            break;
        case Order::kTellLights:
            syncLed(state_.console.lights, true);
            break;
        case Order::kLetGo:
            letGoOfEverything();
            break;
        case Order::kCross:
            cross(state_.console, command.direction);
            break;
        case Order::kCrossByArrow:
            crossByArrow(state_.console, command.direction);
            break;
    }
    state_.box = boxInControl();
}

void ConsoleSink::pause(std::int64_t microseconds) {
    lines_.print();
    sleepMicroseconds(microseconds);
}

void ConsoleSink::print(const char* format, va_list arguments) { lines_.add(format, arguments); }
