#pragma once

#include "input/rule_state.h"
#include "input/sink.h"

/// The sink of the running console: datagrams, waits and printed lines. After a command the state
/// has the box then in control. Input thread.
class ConsoleSink : public Sink {
 public:
    explicit ConsoleSink(RuleState& state) : state_(state) {}

    void toBox(const BoxReport& report) override;
    void toOsd(OsdPort port, std::span<const std::uint8_t> bytes) override;
    void command(const Command& command) override;
    void pause(std::int64_t microseconds) override;

 protected:
    void print(const char* format, va_list arguments) override;

 private:
    RuleState& state_;
};
