// tavrik-target-test arm|pc|power KERNEL INITRAMFS LOG: the daemon on a real kernel in an emulated
// machine.
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <exception>

#include "checks.h"
#include "machine/emulator.h"

namespace {

void run(bool arm, char** files, const std::string& disk, Checks& checks) {
    const auto start = std::chrono::steady_clock::now();
    const std::string registers = arm ? files[2] + std::string(".registers") : "";
    if (arm) {
        makeRegisters(registers);
    }
    Machine machine(emulatorCommand({arm, files[0], files[1], registers, disk}), files[2]);
    const bool booted = !machine.await("## ready", std::chrono::seconds(90)).empty();
    const std::chrono::duration<double> boot = std::chrono::steady_clock::now() - start;
    checks.isTrue("the machine boots", booted);
    checks.atMost("  boot time", boot.count(), disk.empty() ? 30 : 60, "s");
    if (!booted) {
        return;
    }
    Console console{machine, checks, arm, !disk.empty()};
    checkStart(console, registers);
    checkRecords(console);
    checkKeys(console);
    checkPointer(console);
    checkLights(console);
    checkHotPlug(console);
    if (arm) {
        checkPulledWhileHeld(console);
        checkPanels(console);
        checkQuickHands(console);
        checkQuickHotPlugs(console);
        checkEndurance(console);
        unlink(registers.c_str());
    }
    if (console.service) {
        const std::string status = machine.shell("tavrikctl status 127.0.0.1");
        checks.isTrue("tavrikctl tells devices, unit, ports and the last box in control",
                      status.find(": 1 mouse, 1 keyboard, no touch panel") != std::string::npos &&
                          status.find("unit active, ports open") != std::string::npos &&
                          status.find("last box in control: 127.0.0.3") != std::string::npos,
                      status);
        checks.equal("its log tells no keys", "0",
                     machine.shell("journalctl --namespace=tavrik --output=cat | "
                                   "grep -c -e 'key press' -e type: || true"));
    }
    checks.equal("the daemon still runs", "tavrik", machine.shell("cat /proc/$daemon/comm"));
}

}  // namespace

int main(int argc, char** argv) {
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    const std::string_view kind = argc > 1 ? argv[1] : "";
    if (argc != (kind == "service" ? 6 : 5)) {
        std::fputs("usage: tavrik-target-test arm|pc|power|service KERNEL INITRAMFS LOG [DISK]\n",
                   stderr);
        return 2;
    }
    Checks checks;
    try {
        if (kind == "power") {
            checkPowerCuts({.kernel = argv[2], .initramfs = argv[3]}, argv[4], checks);
        } else {
            run(kind == "arm", argv + 2, kind == "service" ? argv[5] : "", checks);
        }
    } catch (const std::exception& problem) {
        checks.isTrue("the machine runs to the end", false, problem.what());
    }
    std::printf("%d passed, %d failed\n", checks.passed(), checks.failed());
    return checks.failed() == 0 ? 0 : 1;
}
