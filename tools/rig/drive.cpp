#include "rig/drive.h"

#include <linux/input-event-codes.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>

#include "rig/terminal_keys.h"

namespace rig {
namespace {

constexpr int kKeyboard = 0;
constexpr int kMouse = 1;
constexpr int kLookMilliseconds = 500;

volatile std::sig_atomic_t g_ended = 0;

/// Raw mode while it lives. A signal that would end the program ends the loop instead, so that the
/// terminal is restored.
class RawTerminal {
 public:
    RawTerminal() {
        tcgetattr(STDIN_FILENO, &before_);
        termios raw = before_;
        cfmakeraw(&raw);
        tcsetattr(STDIN_FILENO, TCSANOW, &raw);
        struct sigaction action {};
        action.sa_handler = [](int) { g_ended = 1; };
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
            sigaction(signal, &action, nullptr);
        }
    }
    ~RawTerminal() { tcsetattr(STDIN_FILENO, TCSANOW, &before_); }
    RawTerminal(const RawTerminal&) = delete;
    RawTerminal& operator=(const RawTerminal&) = delete;

 private:
    termios before_{};
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

void help() {
    show("A virtual console with a keyboard, a mouse and a wall of two screens, two boxes each.");
    show(
        "  type                 keys go to the box in control (Shift, Ctrl+letter, Alt+letter too)");
    show("  Alt+arrows           move the pointer by 20");
    show("  Alt+Enter            left click         Alt+Backspace        right click");
    show("  Alt+PgUp, Alt+PgDn   turn the wheel     Ctrl+C               end");
    show("Each line below is one datagram that a box received.");
}

}  // namespace

void show(const std::string& line) {
    const std::string whole = "\r" + line + "\r\n";
    const bool terminal = isatty(STDOUT_FILENO) != 0;
    const std::string& text = terminal ? whole : line + "\n";
    std::fwrite(text.data(), 1, text.size(), stdout);  // one call: stdio keeps it whole
    std::fflush(stdout);
}

int drive(World& world, bool log) {
    help();
    const RawTerminal raw;
    const auto lines = [](std::string_view line) { show("  | " + std::string(line)); };
    if (const auto problem = world.start(log ? Daemon::Observer(lines) : Daemon::Observer())) {
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
        std::array<char, 256> input{};
        const ssize_t got = read(STDIN_FILENO, input.data(), input.size());
        if (got <= 0) {
            break;
        }
        for (const Typed& typed : typedKeys({input.data(), static_cast<std::size_t>(got)})) {
            if (!perform(world.board, typed)) {
                show("tavrik-rig: nobody reads the device now, try again in a second");
            }
        }
        world.clear();
    }
    return 0;
}

}  // namespace rig
