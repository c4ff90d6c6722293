#include "checks.h"

/// Devices that come and go, boxes and panels of other kinds, and what a long day costs.

namespace {

struct PanelRow {
    const char *name, *kind;  ///< kind: "touch", or "buttons" for one that is a joystick as well
    int maxX, maxY;
    const char* line;   ///< the daemon's line
    const char* touch;  ///< where the box sees a touch at a quarter of each axis
};

/// The second Siliconworks range is that of a restart; its positions have an offset.
constexpr PanelRow kPanels[] = {
    {"ILITEK ILITEK-TP", "touch", 16384, 16384, "get new touch event-->event", "pointer 480,270"},
    {"ILITEK Multi-Touch-V3000", "buttons", 16384, 9600, "get touch event-->event",
     "pointer 480,270"},
    {"ILITEK Multi-Touch-V5000", "touch", 16384, 9600,
     "get new V5000 systerm old touch event-->event", "pointer 480,270"},
    {"Melfas LGDisplay", "touch", 4080, 4080, "get LG systerm old touch event-->event",
     "pointer 480,270"},
    {"Unnamed Panel", "buttons", 1000, 2000, "get touch event-->event", "pointer 480,270"},
    {"Siliconworks", "touch", 32446, 32173, "get Siw systerm  touch event-->event",
     "pointer 469,259"},
};

bool plugPanel(Console& console, const PanelRow& row) {
    console.machine.start("mkfifo /run/panel 2>/dev/null; exec 4<>/run/panel");
    console.machine.start("tavrik-target-guest panel " + std::string(row.kind) + ' ' +
                          std::to_string(row.maxX) + ' ' + std::to_string(row.maxY) + " '" +
                          row.name + "' <&4 & panel=$!");
    const std::string line = console.machine.await(row.line);
    console.checks.isTrue(std::string("panel ") + row.name, !line.empty(), line);
    return console.awaitListening();
}

bool pullPanel(Console& console) {
    console.machine.start("kill $panel");
    return console.awaitListening();
}

void sendToPanel(Console& console, const std::string& line) {
    console.machine.start("echo " + line + " >&4");
}

}  // namespace

void checkHotPlug(Console& console) {
    Machine& machine = console.machine;
    machine.unplug("mouse0");
    console.checks.isTrue("the mouse is pulled", console.awaitListening());
    machine.plug("usb-mouse", "mouse0");
    console.checks.isTrue("the mouse is plugged in again", console.awaitListening());
    machine.skip();
    machine.move(5, 5);
    const auto report = machine.take("box 80 ", 1);
    console.checks.isTrue("and moves the pointer",
                          report.size() == 1 && report[0].starts_with("pointer "));
}

void checkPulledWhileHeld(Console& console) {
    Machine& machine = console.machine;
    machine.key("b", true);
    console.expectBox("a key is held", {"key down B"});
    machine.unplug("kbd0");
    console.expectBox("while its keyboard is pulled: the box gets its release", {"keys up"});
    console.awaitListening();
    machine.skip();
    machine.button("left", true);
    const std::vector<std::string> clicked = machine.take("box 80 pointer ", 2);
    machine.unplug("mouse0");
    const std::vector<std::string> released = machine.take("box 80 pointer ", 1);
    console.checks.isTrue("a button is held", clicked.size() == 2 && clicked[1].ends_with("left"));
    console.checks.isTrue("while its mouse is pulled: the box gets its release",
                          released.size() == 1 && released[0].ends_with("buttons none"),
                          released.empty() ? "nothing" : released[0]);
    machine.plug("usb-kbd", "kbd0");
    machine.plug("usb-mouse", "mouse0");
    console.checks.isTrue("both are back",
                          !machine.await("get real mouse event 1, keyboard evnet 1").empty() &&
                              console.awaitListening());
    machine.key("b", false);
    machine.button("left", false);
    machine.skip();
    console.tap("c");
    console.expectBox("the next key", {"key down C", "keys up"});
}

void checkPanels(Console& console) {
    for (const PanelRow& row : kPanels) {
        console.checks.isTrue("  is read", plugPanel(console, row));
        console.machine.skip();
        sendToPanel(console,
                    "down " + std::to_string(row.maxX / 4) + ' ' + std::to_string(row.maxY / 4));
        console.expectBox("  a touch", {std::string(row.touch) + " buttons left"});
        sendToPanel(console, "up");
        console.expectBox("  its end", {std::string(row.touch) + " buttons none"});
        console.checks.isTrue("  is pulled", pullPanel(console));
    }
}

/// Another keyboard in the place of the one that is there, while the daemon stands still; then
/// `command`, and the daemon goes on. The listing's lines are what they were.
bool replacedUnseen(Console& console, const std::string& command) {
    Machine& machine = console.machine;
    machine.shell("kill -STOP $daemon");
    machine.skip();
    machine.unplug("kbd0");
    machine.shell("while grep -q 'USB Keyboard' /proc/bus/input/devices; do usleep 10000; done");
    machine.plug("usb-kbd", "kbd0");
    machine.shell("until grep -q 'USB Keyboard' /proc/bus/input/devices; do usleep 10000; done");
    machine.shell(command + "kill -CONT $daemon");
    return console.awaitListening();
}

void checkReplacedUnseen(Console& console) {
    Machine& machine = console.machine;
    console.checks.isTrue(
        "a keyboard without its node",
        replacedUnseen(console,
                       "rm /dev/input/$(grep -A 4 'USB Keyboard' /proc/bus/input/devices | "
                       "grep -o 'event[0-9]*'); "));
    console.checks.isTrue("  is put back with it", replacedUnseen(console, ""));
    machine.skip();
    console.tap("f");
    console.expectBox("  the next key", {"key down F", "keys up"});
}

/// Changes that come faster than the daemon looks.
void checkQuickHotPlugs(Console& console) {
    Machine& machine = console.machine;
    for (int i = 0; i < 19; ++i) {
        machine.plug("usb-mouse", "quick");
        machine.unplug("quick");
    }
    machine.plug("usb-mouse", "quick");
    console.checks.isTrue("20 hot plugs in a row",
                          !machine.await("get real mouse event 2, keyboard evnet 1").empty() &&
                              console.awaitListening());
    machine.unplug("quick");
    console.checks.isTrue("  and none left", console.awaitListening());
    machine.unplug("kbd0");
    machine.plug("usb-kbd", "kbd0");
    console.checks.isTrue("a keyboard pulled and put back at once",
                          !machine.await("keyboard evnet 1").empty() && console.awaitListening());
    machine.skip();
    console.tap("d");
    console.expectBox("  the next key", {"key down D", "keys up"});
    checkReplacedUnseen(console);
}

/// A mouse with a bad plug, for a minute.
void checkFlapping(Console& console) {
    Machine& machine = console.machine;
    machine.start("tavrik-target-guest flap 100 60 &");
    const std::string told = machine.await("flapped ", std::chrono::seconds(90));
    console.checks.isTrue("a mouse comes and goes ten times a second",
                          told.find(" well ") != told.npos, told);
    machine.shell("sleep 3");  // the last of them has been listened to
    machine.skip();
    console.tap("h");
    console.expectBox("  the next key", {"key down H", "keys up"});
}

void checkEndurance(Console& console) {
    checkFlapping(console);  // and the heap is as large as devices ever make it
    Machine& machine = console.machine;
    const double descriptors = console.figure("ls /proc/$daemon/fd | wc -l");
    const double threads = console.status("Threads");
    const double memory = console.status("VmRSS");
    console.checks.isTrue("figures before", descriptors > 0 && threads == 6 && memory > 0);
    int listened = 0;
    for (int i = 0; i < 50; ++i) {
        machine.plug("usb-kbd", "kbd1");
        listened += console.awaitListening() ? 1 : 0;
        machine.unplug("kbd1");
        listened += console.awaitListening() ? 1 : 0;
    }
    console.checks.equal("100 restarts of the input thread", std::to_string(100),
                         std::to_string(listened));
    machine.skip();
    console.tap("e");
    console.expectBox("  the next key", {"key down E", "keys up"});
    console.checks.atMost("  more descriptors",
                          console.figure("ls /proc/$daemon/fd | wc -l") - descriptors, 0, "");
    console.checks.atMost("  more threads", console.status("Threads") - threads, 0, "");
    console.checks.atMost("  no more memory", console.status("VmRSS"), memory, "kB");
    console.checks.atMost("memory at most (VmHWM)", console.status("VmHWM"), 4096, "kB");
    // Nanoseconds of all threads.
    const char* const kUsed =
        "cat /proc/$daemon/task/*/schedstat | awk '{all += $1} END {print all}'";
    const double before = console.figure(kUsed);
    machine.shell("sleep 10");
    console.checks.atMost("processor when idle", (console.figure(kUsed) - before) / 1e8, 0.2,
                          "percent");
}
