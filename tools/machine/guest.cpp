// What runs beside the daemon in the test machine: input boxes, touch panels and quick hands made
// through uinput, and a look at raw event records. Lines on standard input steer it, lines on
// standard output tell.
#include <fcntl.h>
#include <linux/uinput.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <initializer_list>
#include <iostream>
#include <mutex>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "rig/box.h"

namespace {

/// `box NAME ADDRESS`: prints "NAME PORT WORDS" for every report; a line read is the new answer to
/// "link", "?" asks which buttons are down.
int runBox(const std::string& name, const std::string& address) {
    std::mutex guard;
    std::string buttons = "none";
    rig::Box box({{address, 80}, {address, 2000}}, std::nullopt, [&](const rig::Report& report) {
        std::printf("%s %u %s\n", name.c_str(), unsigned{report.at.port}, report.text.c_str());
        const std::lock_guard hold(guard);
        constexpr std::string_view kWord = " buttons ";
        const std::size_t at = report.text.find(kWord);
        buttons = at == std::string::npos ? buttons : report.text.substr(at + kWord.size());
    });
    std::printf("%s listens\n", name.c_str());
    for (std::string line; std::getline(std::cin, line);) {
        if (line == "?") {
            const std::lock_guard hold(guard);
            std::printf("%s holds %s\n", name.c_str(), buttons.c_str());
            continue;
        }
        box.setAnswer(line);
        std::printf("%s answers %s\n", name.c_str(), line.c_str());
    }
    return 0;
}

/// `order TEXT...`: each text as a command to the daemon.
int sendOrders(char** first, char** last) {
    const rig::Box sender({{"127.0.0.1", 0}});
    for (char** text = first; text != last; ++text) {
        if (!sender.send({"127.0.0.1", 41236}, *text)) {
            return 1;
        }
    }
    return 0;
}

/// `records NODE`: the bytes and the types of what one read from the node gives.
int showRecords(const char* node) {
    const int fd = open(node, O_RDONLY);
    std::printf("records wait\n");
    std::array<input_event, 64> events{};
    const ssize_t got = read(fd, events.data(), sizeof(events));
    std::printf("records of %zu bytes, read %zd:", sizeof(input_event), got);
    for (std::size_t i = 0; got > 0 && i < static_cast<std::size_t>(got) / sizeof(input_event);
         ++i) {
        std::printf(" %u", unsigned{events[i].type});
    }
    std::printf("\n");
    close(fd);
    return got > 0 ? 0 : 1;
}

/// A device made through uinput. It goes with this object.
class Device {
 public:
    Device() : fd_(open("/dev/uinput", O_WRONLY)) {}
    ~Device() { close(fd_); }
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    bool isThere() const { return ok_; }
    void plug(const std::string& name) {
        uinput_setup setup{};
        setup.id.bustype = BUS_USB;
        name.copy(setup.name, sizeof(setup.name) - 1);
        ok_ = ok_ && ioctl(fd_, UI_DEV_SETUP, &setup) == 0 && ioctl(fd_, UI_DEV_CREATE) == 0;
    }
    void unplug() { ok_ = ok_ && ioctl(fd_, UI_DEV_DESTROY) == 0; }
    void allow(unsigned long request, std::initializer_list<int> bits) {
        for (const int bit : bits) {
            ok_ = ok_ && ioctl(fd_, request, bit) == 0;
        }
    }
    void setRange(int axis, int maximum) {
        uinput_abs_setup range{};
        range.code = static_cast<std::uint16_t>(axis);
        range.absinfo.maximum = maximum;
        ok_ = ok_ && ioctl(fd_, UI_ABS_SETUP, &range) == 0;
    }
    /// One event; `last` ends the packet.
    void put(int type, int code, int value, bool last = false) {
        write(type, code, value);
        if (last) {
            write(EV_SYN, SYN_REPORT, 0);
        }
    }

 private:
    void write(int type, int code, int value) {
        input_event event{};
        event.type = static_cast<std::uint16_t>(type);
        event.code = static_cast<std::uint16_t>(code);
        event.value = value;
        ok_ = ok_ && ::write(fd_, &event, sizeof(event)) == static_cast<ssize_t>(sizeof(event));
    }

    int fd_;
    bool ok_ = true;
};

/// `panel touch|buttons MAXX MAXY NAME`: until its input ends; with `buttons` one that the kernel
/// takes for a joystick as well. Lines: "down X Y", "move X Y", "up".
int runPanel(const std::string& name, bool buttons, int maxX, int maxY) {
    const int contact = buttons ? BTN_LEFT : BTN_TOUCH;
    Device panel;
    panel.allow(UI_SET_EVBIT, {EV_KEY, EV_ABS});
    panel.allow(UI_SET_KEYBIT, {contact});
    if (buttons) {
        panel.allow(UI_SET_KEYBIT, {BTN_RIGHT});
    }
    panel.setRange(ABS_X, maxX);
    panel.setRange(ABS_Y, maxY);
    panel.plug(name);
    std::printf("panel %s %s\n", panel.isThere() ? "plugged" : "refused", name.c_str());
    for (std::string line; panel.isThere() && std::getline(std::cin, line);) {
        std::istringstream words(line);
        std::string word;
        int x = 0;
        int y = 0;
        words >> word >> x >> y;
        if (word != "up") {
            panel.put(EV_ABS, ABS_X, x);
            panel.put(EV_ABS, ABS_Y, y, word == "move");
        }
        if (word != "move") {
            panel.put(EV_KEY, contact, word == "down" ? 1 : 0, true);
        }
    }
    return panel.isThere() ? 0 : 1;
}

/// Sleeps from one beat to the next. A beat that came late is not made up for: no device bursts.
class Beat {
 public:
    explicit Beat(std::chrono::microseconds length) : length_(length) {}
    void wait() {
        next_ = std::max(next_ + length_, std::chrono::steady_clock::now());
        std::this_thread::sleep_until(next_);
    }

 private:
    std::chrono::microseconds length_;
    std::chrono::steady_clock::time_point next_ = std::chrono::steady_clock::now();
};

/// Types capitals as a barcode reader does: Shift for each of them.
void typeCapitals(Device& keyboard, int count, int milliseconds) {
    constexpr int kLetters[] = {KEY_A, KEY_B, KEY_C, KEY_D, KEY_E};
    Beat beat(std::chrono::microseconds(milliseconds * 1000 / 4));
    for (int i = 0; i < count; ++i) {
        const int letter = kLetters[static_cast<std::size_t>(i) % std::size(kLetters)];
        for (const auto& [key, value] :
             {std::pair{KEY_LEFTSHIFT, 1}, {letter, 1}, {letter, 0}, {KEY_LEFTSHIFT, 0}}) {
            keyboard.put(EV_KEY, key, value, true);
            beat.wait();
        }
    }
}

/// From the outer edge of one cell with the left button down over the edge to the other, at 800
/// movements a second; the button is let go of 5 ms behind the edge.
void drag(Device& mouse, int direction) {
    constexpr int kStep = 40, kBehindTheEdge = 1920 / kStep + 4, kSteps = kBehindTheEdge + 100;
    mouse.put(EV_REL, REL_X, -direction * 5000, true);
    mouse.put(EV_KEY, BTN_LEFT, 1, true);
    Beat beat(std::chrono::microseconds(1250));
    for (int step = 0; step < kSteps; ++step) {
        if (step == kBehindTheEdge) {
            mouse.put(EV_KEY, BTN_LEFT, 0, true);
        }
        mouse.put(EV_REL, REL_X, direction * (step <= kBehindTheEdge ? kStep : 1));
        mouse.put(EV_REL, REL_Y, step % 2 == 0 ? 1 : -1, true);
        beat.wait();
    }
}

/// `hands NAME`: a keyboard and a mouse of that name, until the input ends. Lines: "type COUNT MS"
/// (a letter), "drag 1" to the right, "drag -1" to the left; each is answered by "hands done".
int runHands(const std::string& name) {
    Device keyboard;
    keyboard.allow(UI_SET_EVBIT, {EV_KEY});
    for (int key = KEY_ESC; key <= KEY_SPACE; ++key) {
        keyboard.allow(UI_SET_KEYBIT, {key});
    }
    keyboard.plug(name + " Keyboard");
    Device mouse;
    mouse.allow(UI_SET_EVBIT, {EV_KEY, EV_REL});
    mouse.allow(UI_SET_KEYBIT, {BTN_LEFT, BTN_RIGHT, BTN_MIDDLE});
    mouse.allow(UI_SET_RELBIT, {REL_X, REL_Y, REL_WHEEL});
    mouse.plug(name + " Mouse");
    const auto areThere = [&] { return keyboard.isThere() && mouse.isThere(); };
    std::printf("hands %s\n", areThere() ? "plugged" : "refused");
    for (std::string line; areThere() && std::getline(std::cin, line);) {
        std::istringstream words(line);
        std::string word;
        int first = 0;
        int second = 0;
        words >> word >> first >> second;
        word == "type" ? typeCapitals(keyboard, first, second) : drag(mouse, first);
        std::printf("hands done\n");
    }
    return areThere() ? 0 : 1;
}

/// `flap MS SECONDS`: for so long a mouse that is there for MS and then away for MS.
int flap(int milliseconds, int seconds) {
    Beat beat(std::chrono::microseconds(milliseconds * 1000));
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    bool well = true;
    int times = 0;
    for (; well && std::chrono::steady_clock::now() < end; ++times) {
        Device mouse;
        mouse.allow(UI_SET_EVBIT, {EV_KEY, EV_REL});
        mouse.allow(UI_SET_KEYBIT, {BTN_LEFT});
        mouse.allow(UI_SET_RELBIT, {REL_X, REL_Y});
        mouse.plug("Flapping Mouse");
        well = mouse.isThere();
        beat.wait();
        mouse.unplug();
        beat.wait();
    }
    std::printf("flapped %s %d times\n", well ? "well" : "badly", times);
    return well ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    const std::string_view mode = argc > 2 ? argv[1] : "";
    if (mode == "box" && argc == 4) {
        return runBox(argv[2], argv[3]);
    }
    if (mode == "order") {
        return sendOrders(argv + 2, argv + argc);
    }
    if (mode == "hands") {
        return runHands(argv[2]);
    }
    if (mode == "flap" && argc == 4) {
        return flap(std::stoi(argv[2]), std::stoi(argv[3]));
    }
    if (mode == "records") {
        return showRecords(argv[2]);
    }
    if (mode == "panel" && argc == 6) {
        return runPanel(argv[5], std::string_view(argv[2]) == "buttons", std::stoi(argv[3]),
                        std::stoi(argv[4]));
    }
    std::fputs(
        "usage: tavrik-target-guest box NAME ADDRESS | order TEXT... | records NODE | panel KIND MAXX MAXY NAME"
        " | hands NAME | flap MS SECONDS\n",
        stderr);
    return 2;
}
