#include <cstdio>
#include <cstring>
#include <fstream>

#include "checks.h"

/// The daemon on a real kernel: start, keys, pointer, lights.

namespace {

constexpr const char* kBox = "127.0.0.31";

/// The little-endian word at `offset` of a file.
std::uint32_t wordAt(const std::string& path, long offset) {
    std::ifstream file(path, std::ios::binary);
    file.seekg(offset);
    std::uint32_t word = 0;
    file.read(reinterpret_cast<char*>(&word), sizeof(word));
    return file ? word : 0xFFFFFFFF;
}

/// What the start-up of board A leaves in its registers, seen from outside. The file lies in the
/// machine at 0x10000000.
void checkRegisters(Checks& checks, const std::string& registers) {
    constexpr long kBase = 0x10000000;
    checks.equal("board A: register 0x120F0170 ends at 1", std::to_string(1U),
                 std::to_string(wordAt(registers, 0x120F0170 - kBase)));
    checks.equal("board A: bit 3 of 0x12220400 is set, the rest is kept", std::to_string(0x5AU),
                 std::to_string(wordAt(registers, 0x12220400 - kBase)));
    checks.equal("board A: bit 3 of 0x12220020 is cleared, the rest is kept", std::to_string(0xF0U),
                 std::to_string(wordAt(registers, 0x12220020 - kBase)));
}

void prepareRegisters(const std::string& registers) {
    constexpr long kBase = 0x10000000;
    std::fstream file(registers, std::ios::binary | std::ios::in | std::ios::out);
    const auto put = [&file](long address, char value) {
        file.seekp(address - kBase);
        file.put(value);
    };
    put(0x120F0170, 0x77);
    put(0x12220400, 0x52);
    put(0x12220020, static_cast<char>(0xF8));
}

void startDaemon(Console& console) {
    Machine& machine = console.machine;
    if (!console.service) {
        machine.start("cd /data; /usr/sbin/tavrik & daemon=$!");
        return;
    }
    machine.start("journalctl --follow --lines=all --output=cat --unit=tavrik &");
    console.checks.isTrue("systemd starts the unit", machine.start("systemctl start tavrik"));
    machine.start("daemon=$(systemctl show --property=MainPID --value tavrik)");
    const std::string state = machine.shell("systemctl show --property=ExecStartPre tavrik");
    console.checks.isTrue("a register can be mapped under its restrictions",
                          state.find("status=0") != std::string::npos, state);
}

}  // namespace

void checkStart(Console& console, const std::string& registers) {
    Machine& machine = console.machine;
    const char* board = registers.empty() ? "BOARDB0002_002_R1" : "BOARDA00001_0001_R1";
    if (!registers.empty()) {
        prepareRegisters(registers);
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
                  "\\n' >>/data/tav_rik.ini");
    machine.start(std::string("mkfifo /run/answer; exec 3<>/run/answer; tavrik-target-guest box ") +
                  kBox + " <&3 &");
    machine.start("echo 'vi_w=1920&vi_h=1080&kvm=abs&' >&3");
    machine.await("box answers");
    startDaemon(console);
    const std::string version = machine.await("version:BOARD");
    console.checks.equal("the board is known", std::string("version:") + board, version);
    const std::string real = machine.await("get real mouse event ");
    console.checks.equal(
        console.arm ? "devices that do not answer (gpio-keys) are dropped" : "the devices answer",
        "get real mouse event 1, keyboard evnet 1", real);
    console.checks.isTrue("the daemon listens", console.awaitListening());
    if (!registers.empty()) {
        checkRegisters(console.checks, registers);
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
    constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz0123456789";
    // The emulated keyboard itself keeps only 16 changes that nobody has fetched yet.
    std::vector<std::string> expected;
    std::vector<std::string> got;
    for (const char letter : kLetters) {
        console.tap(std::string(1, letter));
        const char name = letter >= 'a' ? static_cast<char>(letter - 'a' + 'A') : letter;
        expected.push_back(std::string("key down ") + name);
        expected.emplace_back("keys up");
        const auto reports = console.machine.take("box 80 ", 2);
        got.insert(got.end(), reports.begin(), reports.end());
        if (reports.size() < 2) {
            break;
        }
    }
    console.checks.equal("letters and digits", expected, got);
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
