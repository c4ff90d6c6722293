#include <algorithm>
#include <utility>

#include "checks.h"

/// Hands that are quicker than the console's own pauses (10 ms behind a key combination, 50 and
/// more at a new box), where the kernel keeps 64 records: nothing is lost and nothing stays down.

namespace {

/// What the box gets for `count` capitals; a pause of the console follows each letter.
std::vector<std::string> reportsOf(int count) {
    std::vector<std::string> reports;
    for (int i = 0; i < count; ++i) {
        const std::string letter(1, static_cast<char>('A' + i % 5));
        reports.insert(reports.end(), {"modifiers LEFTSHIFT", "key down LEFTSHIFT+" + letter,
                                       "modifiers LEFTSHIFT", "keys up"});
    }
    return reports;
}

void checkCapitals(Console& console, int count, int milliseconds) {
    Machine& machine = console.machine;
    const std::vector<std::string> expected = reportsOf(count);
    std::vector<std::string> got;
    machine.skip();
    machine.start("echo type " + std::to_string(count) + ' ' + std::to_string(milliseconds) +
                  " >&5");
    while (got.size() < expected.size()) {
        const auto more = machine.take("box 80 ", std::min(expected.size() - got.size(), 40UL));
        if (more.empty()) {
            break;
        }
        got.insert(got.end(), more.begin(), more.end());
    }
    const auto letters = std::count_if(got.begin(), got.end(), [](const std::string& report) {
        return report.starts_with("key down ");
    });
    console.checks.isTrue(
        std::to_string(count) + " capitals, " + std::to_string(milliseconds) + " ms each",
        got == expected, std::to_string(letters) + " arrive");
}

/// More letters at once than the daemon and the kernel keep: some are lost, no key stays down.
void checkFlood(Console& console) {
    Machine& machine = console.machine;
    machine.skip();
    machine.start("echo type 2000 0 >&5");
    machine.await("hands done");
    console.checks.isTrue("2000 capitals without a pause: what the kernel lost is told",
                          !machine.await(" lost events, ").empty());
    std::vector<std::string> last;
    for (auto more = machine.take("box 80 ", 1); !more.empty(); more = machine.take("box 80 ", 1)) {
        last = more;
    }
    console.checks.equal("  and nothing stays down", std::vector<std::string>{"keys up"}, last);
    console.tap("g");
    console.expectBox("  the next key", {"key down G", "keys up"});
}

/// True when the pointer went over to the box `name`, whose questions are asked at `fd`, and its
/// button is up there.
bool dragIsOver(Machine& machine, int direction, const std::string& name, int fd) {
    machine.skip();
    machine.start("echo drag " + std::to_string(direction) + " >&5");
    const bool crossed = !machine.take(name + " 80 pointer ", 1).empty();
    machine.await("hands done");
    machine.shell("usleep 150000");
    machine.start("echo '?' >&" + std::to_string(fd));
    return crossed && machine.await(name + " holds ") == name + " holds none";
}

}  // namespace

void checkQuickHands(Console& console) {
    Machine& machine = console.machine;
    machine.start(
        "mkfifo /run/hands; exec 5<>/run/hands; tavrik-target-guest hands Quick <&5 & hands=$!");
    console.checks.isTrue("quick hands",
                          !machine.await("hands plugged").empty() &&
                              !machine.await("get real mouse event 2, keyboard evnet 2").empty() &&
                              console.awaitListening());
    for (const auto& [count, milliseconds] : {std::pair{40, 4}, {40, 2}, {200, 4}}) {
        checkCapitals(console, count, milliseconds);
    }
    checkFlood(console);
    int stuck = 0;
    for (int pair = 0; pair < 25; ++pair) {
        stuck += dragIsOver(machine, 1, "right", 6) ? 0 : 1;
        stuck += dragIsOver(machine, -1, "box", 3) ? 0 : 1;
    }
    console.checks.atMost("drags over an edge that leave the button down", stuck, 0, "of 50");
    machine.start("kill $hands");
    console.checks.isTrue("  the hands are gone", console.awaitListening());
    machine.skip();
}
