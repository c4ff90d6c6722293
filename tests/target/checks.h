#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "machine/emulator.h"
#include "machine/machine.h"

/// Counts what passed and what failed, one line a check.
class Checks {
 public:
    void isTrue(std::string_view what, bool passed, std::string_view detail = "");
    void equal(std::string_view what, const std::string& expected, const std::string& got) {
        equal(what, std::vector{expected}, std::vector{got});
    }
    void equal(std::string_view what, const std::vector<std::string>& expected,
               const std::vector<std::string>& got);
    /// A measured figure; it passes when it is at most `limit`.
    void atMost(std::string_view what, double value, double limit, std::string_view unit);
    int passed() const { return passed_; }
    int failed() const { return failed_; }

 private:
    int passed_ = 0;
    int failed_ = 0;
};

/// The machine with the daemon and a box in it, and what every check of them needs.
struct Console {
    Machine& machine;
    Checks& checks;
    bool arm;
    bool service;  ///< started by systemd as the package's unit

    /// Waits until the daemon listens to its devices again and has brought the box up to date.
    bool awaitListening();
    /// The next reports at the box must be exactly these.
    void expectBox(std::string_view what, const std::vector<std::string>& expected);
    void tap(std::string_view key);
    /// The number that a command in the machine prints; -1 when it fails.
    double figure(const std::string& command);
    /// A value from the daemon's /proc/PID/status, such as VmHWM; -1 when it is not there.
    double status(const std::string& field);
};

// The checks, in the order in which they can run.
void checkStart(Console& console, const std::string& registers);
void checkRecords(Console& console);
void checkKeys(Console& console);
void checkPointer(Console& console);
void checkLights(Console& console);
void checkHotPlug(Console& console);
void checkPulledWhileHeld(Console& console);
void checkPanels(Console& console);
void checkQuickHands(Console& console);
void checkQuickHotPlugs(Console& console);
void checkEndurance(Console& console);

/// In a machine of its own, whose plan needs no flash yet.
void checkPowerCuts(const EmulatorPlan& machinePlan, const std::string& log, Checks& checks);
