#include <cctype>
#include <cstdint>
#include <cstdio>
#include <fstream>

#include "checks.h"
#include "machine/emulator.h"

/// The daemon on a real kernel: start, keys, pointer, lights.

namespace {

constexpr const char* kBox = "127.0.0.31";

/// What the start-up of board A makes of its registers, seen from outside in their file.
struct Register {
    long address;
    std::uint8_t before, after;
    const char* what;
};
constexpr Register kRegisters[] = {
    {0x120F0170, 0x77, 0x01, "board A: register 0x120F0170 ends at 1"},
    {0x12220400, 0x52, 0x5A, "board A: bit 3 of 0x12220400 is set, the rest is kept"},
    {0x12220020, 0xF8, 0xF0, "board A: bit 3 of 0x12220020 is cleared, the rest is kept"}};

std::fstream registerAt(const std::string& registers, long address) {
    std::fstream file(registers, std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(address - kRegisterBase);
    return file;
}

void startDaemon(Console& console) {
    Machine& machine = console.machine;
    if (!console.service) {
        machine.start("cd /data; /usr/sbin/tavrik & daemon=$!");
        return;
    }
    console.checks.isTrue("systemd starts the unit", machine.start("systemctl start tavrik"));
    machine.start("journalctl --namespace=tavrik --follow --lines=all --output=cat &");
    machine.start("daemon=$(systemctl show --property=MainPID --value tavrik)");
    machine.shell("sleep 2");
    console.checks.isTrue("and its watchdog is fed",
                          console.figure("systemctl show --property=WatchdogTimestampMonotonic "
                                         "--value tavrik") > 0);
    const std::string state = machine.shell("systemctl show --property=ExecStartPre tavrik");
    console.checks.isTrue("a register can be mapped under its restrictions",
                          state.find("status=0") != std::string::npos, state);
}

}  // namespace

void checkStart(Console& console, const std::string& registers) {
    Machine& machine = console.machine;
    const char* board = registers.empty() ? "BOARDB0002_002_R1" : "BOARDA00001_0001_R1";
    if (!registers.empty()) {
        for (const Register& row : kRegisters) {
            registerAt(registers, row.address).put(static_cast<char>(row.before));
        }
        // The file's memory answers once its device is switched on.
        std::printf("%s\n", machine
                                .shell("cd /sys/bus/pci/devices; for d in *; do grep -q 0x1110 "
                                       "$d/device && echo 1 >$d/enable && "
                                       "head -n 3 $d/resource; done; cd /")
                                .c_str());
    }
    machine.shell("until grep -q Mouse /proc/bus/input/devices; do usleep 10000; done");
    const std::string names = machine.shell("grep Name= /proc/bus/input/devices");
    std::printf("%s\n", names.c_str());
    console.checks.isTrue("a real keyboard and a real mouse are listed",
                          names.find("USB Keyboard") != std::string::npos &&
                              names.find("USB Mouse") != std::string::npos);
    machine.shell(std::string("echo '{\"board\": \"") + board + "\"}' >/version/hardware_info");
    machine.shell("echo kEth0Ip=127.0.0.1 >/data/net.ini");
    // Loading stops at the first key that is missing, so every fixed one is there.
    machine.shell(
        "printf '%s=\\n' kUdpServerPort kActKeyEvent kHotkeymap kHotCmd0 kHotCmd1 kHotCmd2"
        " >/data/tav_rik.ini");
    machine.shell(std::string("printf 'kOutNum=1\\nkOutIpmap0=0,0,127.0.0.1#0,0,") + kBox +
                  "#1,0,127.0.0.32\\n' >>/data/tav_rik.ini");
    machine.start(
        std::string("mkfifo /run/answer; exec 3<>/run/answer; tavrik-target-guest box box ") +
        kBox + " <&3 &");
    machine.start("echo 'vi_w=1920&vi_h=1080&kvm=abs&' >&3");
    machine.await("box answers");
    machine.start(
        "mkfifo /run/right; exec 6<>/run/right; tavrik-target-guest box right 127.0.0.32 <&6 &");
    machine.start("echo 'vi_w=1920&vi_h=1080&kvm=abs&' >&6");
    machine.await("right answers");
    machine.shell("mkdir /data/lib");  // an OSD runs here: three Shifts are no command
    startDaemon(console);
    const std::string version = machine.await("version:BOARD");
    console.checks.equal("the board is known", std::string("version:") + board, version);
    const std::string real = machine.await("get real mouse event ");
    console.checks.equal(
        console.arm ? "devices that do not answer (gpio-keys) are dropped" : "the devices answer",
        "get real mouse event 1, keyboard evnet 1", real);
    console.checks.isTrue("the daemon listens", console.awaitListening());
    console.checks.equal("a second one ends at once", "1",
                         machine.shell("/usr/sbin/tavrik >/dev/null 2>&1; echo $?"));
    if (!registers.empty()) {
        for (const Register& row : kRegisters) {
            std::uint32_t word = 0xFFFFFFFF;
            registerAt(registers, row.address).read(reinterpret_cast<char*>(&word), sizeof word);
            console.checks.equal(row.what, std::to_string(row.after), std::to_string(word));
        }
    }
    machine.skip();
}

void checkRecords(Console& console) {
    Machine& machine = console.machine;
    machine.start(
        "node=$(grep -A 4 'USB Keyboard' /proc/bus/input/devices | grep -o 'event[0-9]*')");
    machine.start("tavrik-target-guest records /dev/input/$node &");
    machine.await("records wait");
    machine.key("z", true);
    // Scan code (4), key (1), end of report (0).
    console.checks.equal(
        "a press as the kernel gives it",
        console.arm ? "records of 16 bytes, read 48: 4 1 0" : "records of 24 bytes, read 72: 4 1 0",
        machine.await("records of"));
    machine.key("z", false);
    console.expectBox("and as the box gets it", {"key down Z", "keys up"});
}

void checkKeys(Console& console) {
    for (const std::string name : {"A", "M", "5", "0"}) {
        console.tap(std::string(1, static_cast<char>(std::tolower(name[0]))));
        console.expectBox("key " + name, {"key down " + name, "keys up"});
    }
}

void checkPointer(Console& console) {
    Machine& machine = console.machine;
    machine.move(40, 30);
    machine.move(-10, 5);
    console.expectBox("movement", {"pointer 40,30 buttons none", "pointer 30,35 buttons none"});
    struct Row {
        const char *button, *during;
        std::size_t reports;  ///< of a press: one for the button, one for the end of the packet
    };
    constexpr Row kRows[] = {{"left", "buttons left", 2},
                             {"right", "buttons right", 2},
                             {"wheel-up", "buttons none wheel 1", 1},
                             {"wheel-down", "buttons none wheel -1", 1}};
    for (const Row& row : kRows) {
        machine.button(row.button, true);
        machine.button(row.button, false);
        std::vector<std::string> expected(row.reports, std::string("pointer 30,35 ") + row.during);
        expected.insert(expected.end(), row.reports, "pointer 30,35 buttons none");
        console.expectBox(row.button, expected);
    }
}

void checkLights(Console& console) {
    struct Row {
        const char *key, *name, *lights;
    };
    constexpr Row kRows[] = {{"caps_lock", "CAPSLOCK", "lights caps on num off"},
                             {"num_lock", "NUMLOCK", "lights caps on num on"},
                             {"caps_lock", "CAPSLOCK", "lights caps off num on"},
                             {"num_lock", "NUMLOCK", "lights caps off num off"}};
    for (const Row& row : kRows) {
        console.tap(row.key);
        console.expectBox(std::string("the keyboard's own lights after ") + row.name,
                          {std::string("key down ") + row.name, "keys up", row.lights});
    }
    console.checks.equal("the kernel says the same of its lights", "0",
                         console.machine.shell("cat /sys/class/leds/*::capslock/brightness"));
}
