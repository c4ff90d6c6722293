#include "rig/drive.h"

#include <linux/input-event-codes.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <map>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>

#include "drawing/wall_drawing.h"
#include "rig/status.h"
#include "rig/terminal_keys.h"

namespace rig {
namespace {

constexpr int kKeyboard = 0;
constexpr int kMouse = 1;
constexpr int kLookMilliseconds = 500;
constexpr std::uint16_t kCommandPort = 41236;
constexpr char kPromptKey = 0x1C;  // Ctrl+backslash

volatile std::sig_atomic_t g_ended = 0;

/// The last line of the terminal, below everything that is shown; empty when there is none.
std::mutex g_showing;
std::string g_statusLine;
Status g_status;

/// Shows the status as `change` leaves it. Any thread.
template <class Change>
void changeStatus(const Change& change) {
    const std::lock_guard<std::mutex> lock(g_showing);
    change(g_status);
    g_statusLine = g_status.line();
    const std::string text = "\r\x1B[K" + g_statusLine;
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

/// Raw mode while it lives. A signal that would end the program ends the loop instead, so that the
/// terminal is restored.
class RawTerminal {
 public:
    RawTerminal() {
        tcgetattr(STDIN_FILENO, &before_);
        raw_ = before_;
        cfmakeraw(&raw_);
        tcsetattr(STDIN_FILENO, TCSANOW, &raw_);
        struct sigaction action {};
        action.sa_handler = [](int) { g_ended = 1; };
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
            sigaction(signal, &action, nullptr);
        }
    }
    ~RawTerminal() { tcsetattr(STDIN_FILENO, TCSANOW, &before_); }
    /// One line, typed and edited as in a shell.
    std::string askLine(const char* prompt) const {
        tcsetattr(STDIN_FILENO, TCSADRAIN, &before_);
        std::printf("\r\x1B[K%s", prompt);
        std::fflush(stdout);
        std::array<char, 2048> line{};
        const ssize_t got = read(STDIN_FILENO, line.data(), line.size());
        tcsetattr(STDIN_FILENO, TCSADRAIN, &raw_);
        const std::string text(line.data(), static_cast<std::size_t>(got > 0 ? got : 0));
        return text.substr(0, text.find('\n'));
    }
    RawTerminal(const RawTerminal&) = delete;
    RawTerminal& operator=(const RawTerminal&) = delete;

 private:
    termios before_{};
    termios raw_{};
};

bool perform(const Board& board, const Typed& typed) {
    switch (typed.kind) {
        case Typed::Kind::kKey: {
            bool good = true;
            for (const std::uint16_t modifier : typed.held) {
                good = board.key(kKeyboard, modifier, true) && good;
            }
            good = board.click(kKeyboard, typed.code) && good;
            for (auto held = typed.held.rbegin(); held != typed.held.rend(); ++held) {
                good = board.key(kKeyboard, *held, false) && good;
            }
            return good;
        }
        case Typed::Kind::kMove:
            return board.move(kMouse, typed.dx, typed.dy);
        case Typed::Kind::kClick:
            return board.click(kMouse, typed.code);
        case Typed::Kind::kWheel:
            return board.wheel(kMouse, typed.dy);
        case Typed::Kind::kQuit:
            g_ended = 1;
            return true;
    }
    return true;
}

/// Three quick taps of the key that `name` means; false when it means none.
bool tapThrice(const Board& board, const std::string& name) {
    const std::map<std::string, std::uint16_t> keys{
        {"ctrl", KEY_LEFTCTRL}, {"alt", KEY_LEFTALT}, {"shift", KEY_LEFTSHIFT}, {"esc", KEY_ESC}};
    const auto key = keys.find(name);
    if (key == keys.end()) {
        return false;
    }
    for (int tap = 0; tap < 3; ++tap) {
        board.click(kKeyboard, key->second);
        std::this_thread::sleep_for(Milliseconds{80});
    }
    return true;
}

/// The number before `delimiter` in what is left of a map entry.
unsigned numberIn(std::istream& entry, char delimiter) {
    std::string field;
    std::getline(entry, field, delimiter);
    return static_cast<unsigned>(std::stoul(field));
}

drawing::Wall wallOf(const Plan& plan) {
    drawing::Wall wall;
    for (const std::string& line : plan.wall) {
        std::istringstream entries(line);
        drawing::Screen* screen = nullptr;
        for (std::string text; std::getline(entries, text, '#');) {
            std::istringstream entry(text);
            const unsigned x = numberIn(entry, ',');
            const unsigned y = numberIn(entry, ',');
            std::string name;
            std::getline(entry, name, '-');
            if (screen == nullptr) {
                screen = &wall[{x, y}];
                screen->name = name;
                screen->isHere = wall.size() == 1;
            } else {
                screen->cells[{x, y}] = {name, 0};
            }
        }
    }
    return wall;
}

void showWall(const Plan& plan) {
    std::istringstream lines(drawing::asText(wallOf(plan)).value_or(""));
    for (std::string line; std::getline(lines, line);) {
        show(line);
    }
}

void help();

/// "help", "tap KEY", or a command for the daemon; "\n" in it stands for a line feed.
void obey(World& world, std::string line) {
    constexpr std::string_view kTap = "tap ";
    if (line == "help") {
        help();
        return;
    }
    if (line.starts_with(kTap)) {
        if (!tapThrice(world.board, line.substr(kTap.size()))) {
            show("tavrik-rig: tap ctrl, alt, shift or esc");
        }
        return;
    }
    for (std::size_t at = line.find("\\n"); at != std::string::npos; at = line.find("\\n", at)) {
        line.replace(at, 2, "\n");
    }
    if (!line.empty()) {
        world.control().send({"127.0.0.1", kCommandPort}, line);
    }
}

/// The status line's place, given back at the end.
struct OwnLastLine {
    OwnLastLine() = default;
    OwnLastLine(const OwnLastLine&) = delete;
    OwnLastLine& operator=(const OwnLastLine&) = delete;
    ~OwnLastLine() {
        const std::lock_guard<std::mutex> lock(g_showing);
        g_statusLine.clear();
        std::fputs("\r\n", stdout);
    }
};

/// Carries out what was typed; false at its end.
bool takeInput(World& world, const RawTerminal& raw) {
    std::array<char, 256> input{};
    const ssize_t got = read(STDIN_FILENO, input.data(), input.size());
    if (got <= 0) {
        return false;
    }
    if (input[0] == kPromptKey) {
        obey(world, raw.askLine("command> "));
        return true;
    }
    const auto actions = typedKeys({input.data(), static_cast<std::size_t>(got)});
    if (actions.empty()) {
        show("tavrik-rig: no key of the virtual keyboard is typed so");
    }
    for (const Typed& typed : actions) {
        if (!perform(world.board, typed)) {
            show("tavrik-rig: nobody reads the device now, try again in a second");
        }
    }
    return true;
}

void help() {
    show("A virtual console with a keyboard, a mouse and a wall of two screens, two boxes each.");
    show(
        "  type                 keys go to the box in control (Shift, Ctrl+letter, Alt+letter too)");
    show("  Alt+arrows           move the pointer by 20      Alt+Shift+arrows   by 400");
    show("  Alt+Enter            left click         Alt+Backspace        right click");
    show("  Alt+PgUp, Alt+PgDn   turn the wheel     Ctrl+C               end");
    show(
        "  Ctrl+\\               a prompt for commands: tap ctrl (alt, shift, esc: three quick taps),");
    show("                       hotkey&ctrl+f1, MTO:1,0, relation&0,0,127.0.0.20#1,0,127.0.0.21,");
    show("                       details&127.0.0.20#0,0,127.0.0.32-8000, OSDSTART, OSDQUIT,");
    show("                       [seq]\\n[control]=127.0.0.20\\nusb_link_device\\nend");
    show("                       help: this text again");
    show(
        "Each line below is one datagram that a box, or the OSD, received; the last one tells what is so now.");
    showWall(usualPlan());
}

}  // namespace

void show(const std::string& line) {
    const std::lock_guard<std::mutex> lock(g_showing);
    const std::string whole = "\r\x1B[K" + line + "\r\n" + g_statusLine;
    const bool terminal = isatty(STDOUT_FILENO) != 0;
    const std::string& text = terminal ? whole : line + "\n";
    std::fwrite(text.data(), 1, text.size(), stdout);  // one call: stdio keeps it whole
    std::fflush(stdout);
}

void showDriven(const std::string& name, const Report& report) {
    show(name + "  " + report.text);
    changeStatus([&](Status& status) { status.saw(name, report.text); });
}

int drive(World& world, bool log) {
    help();
    const RawTerminal raw;
    const OwnLastLine lastLine;
    const auto lines = [log](std::string_view line) {
        if (log || line.find("recv error osd command") != line.npos) {
            show("  | " + std::string(line));
        }
        changeStatus([line](Status& status) { status.saw(line); });
    };
    if (const auto problem = world.start(lines)) {
        show("tavrik-rig: " + *problem);
        return 1;
    }
    pollfd wait{STDIN_FILENO, POLLIN, 0};
    while (g_ended == 0) {
        if (!world.daemon().running()) {
            show("tavrik-rig: the daemon ended");
            return 1;
        }
        if (poll(&wait, 1, kLookMilliseconds) <= 0) {
            continue;
        }
        if (!takeInput(world, raw)) {
            break;
        }
        world.clear();
    }
    return 0;
}

}  // namespace rig
