#pragma once

#include "base/state.h"
#include "input/later_lines.h"
#include "input/rule_state.h"
#include "input/sink.h"

/// The sink of the running console: datagrams, waits, and lines that are printed behind the
/// datagrams. After a command the state has the box then in control. Input thread.
class ConsoleSink : public Sink {
 public:
    explicit ConsoleSink(RuleState& state) : state_(state) { hidesKeys = hideKeys != 0; }

    void toBox(const BoxReport& report) override;
    void toOsd(OsdPort port, std::span<const std::uint8_t> bytes) override;
    void command(const Command& command) override;
    void pause(std::int64_t microseconds) override;

    /// Prints the lines that were said; a command and a pause do so first.
    void printLines() { lines_.print(); }

 protected:
    void print(const char* format, va_list arguments) override;

 private:
    RuleState& state_;
    LaterLines lines_;
};
