// tavrik-target-test arm|pc KERNEL INITRAMFS LOG: the daemon on a real kernel in an emulated
// machine.
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "checks.h"

namespace {

constexpr long kRegisterWindow = 64L << 20;

/// The emulator's command. On ARM a shared file of 64 MiB lies in memory at 0x10000000, where the
/// board has its registers.
std::vector<std::string> emulator(bool arm, const std::string& kernel, const std::string& initramfs,
                                  const std::string& registers, const std::string& disk) {
    std::vector<std::string> command;
    if (arm) {
        command = {"qemu-system-arm", "-M", "virt,highmem=off", "-cpu", "cortex-a15"};
        command.insert(command.end(), {"-object",
                                       "memory-backend-file,id=registers,size=64M,share=on,"
                                       "mem-path=" +
                                           registers,
                                       "-device", "ivshmem-plain,memdev=registers"});
    } else {
        command = {"qemu-system-x86_64", "-M", "q35,i8042=off", "-accel", "tcg", "-vga", "none"};
    }
    if (!disk.empty()) {
        command.insert(command.end(),
                       {"-virtfs", "local,mount_tag=disk,security_model=passthrough,path=" + disk});
    }
    const std::string serial = arm ? "ttyAMA0" : "ttyS0";
    command.insert(command.end(),
                   {"-m", "256", "-kernel", kernel, "-initrd", initramfs, "-append",
                    "console=" + serial + " quiet rdinit=/init panic=-1 systemd.show_status=no",
                    "-device", "qemu-xhci,id=usb", "-device", "usb-kbd,id=kbd0,bus=usb.0",
                    "-device", "usb-mouse,id=mouse0,bus=usb.0"});
    return command;
}

std::string makeRegisters(const std::string& log) {
    const std::string path = log + ".registers";
    std::FILE* file = std::fopen(path.c_str(), "w");
    if (file == nullptr || ftruncate(fileno(file), kRegisterWindow) != 0) {
        throw std::runtime_error("cannot write " + path);
    }
    std::fclose(file);
    return path;
}

void run(bool arm, char** files, const std::string& disk, Checks& checks) {
    const auto start = std::chrono::steady_clock::now();
    const std::string registers = arm ? makeRegisters(files[2]) : "";
    Machine machine(emulator(arm, files[0], files[1], registers, disk), files[2]);
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
    checks.equal("the daemon still runs", "tavrik", machine.shell("cat /proc/$daemon/comm"));
}

}  // namespace

int main(int argc, char** argv) {
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    const std::string_view kind = argc > 1 ? argv[1] : "";
    if (argc != (kind == "service" ? 6 : 5)) {
        std::fputs("usage: tavrik-target-test arm|pc|service KERNEL INITRAMFS LOG [DISK]\n",
                   stderr);
        return 2;
    }
    Checks checks;
    try {
        run(kind == "arm", argv + 2, kind == "service" ? argv[5] : "", checks);
    } catch (const std::exception& problem) {
        checks.isTrue("the machine runs to the end", false, problem.what());
    }
    std::printf("%d passed, %d failed\n", checks.passed(), checks.failed());
    return checks.failed() == 0 ? 0 : 1;
}
