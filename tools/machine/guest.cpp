// What runs beside the daemon in the test machine: an input box, touch panels made through uinput,
// and a look at raw event records. Lines on standard input steer it, lines on standard output tell.
#include <fcntl.h>
#include <linux/uinput.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <iostream>
#include <sstream>
#include <string>
#include <string_view>

#include "rig/box.h"

namespace {

/// `box ADDRESS`: prints "box PORT WORDS" for every report; each line read is the new answer to
/// "link".
int runBox(const std::string& address) {
    rig::Box box({{address, 80}, {address, 2000}}, std::nullopt, [](const rig::Report& report) {
        std::printf("box %u %s\n", unsigned{report.at.port}, report.text.c_str());
    });
    std::printf("box listens\n");
    for (std::string answer; std::getline(std::cin, answer);) {
        box.setAnswer(answer);
        std::printf("box answers %s\n", answer.c_str());
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

class Panel {
 public:
    /// A panel with a contact, or (`buttons`) one that the kernel takes for a joystick as well.
    Panel(const std::string& name, bool buttons, int maxX, int maxY)
        : fd_(open("/dev/uinput", O_WRONLY)), contact_(buttons ? BTN_LEFT : BTN_TOUCH) {
        allow(UI_SET_EVBIT, {EV_KEY, EV_ABS});
        allow(UI_SET_KEYBIT, {contact_});
        if (buttons) {
            allow(UI_SET_KEYBIT, {BTN_RIGHT});
        }
        setRange(ABS_X, maxX);
        setRange(ABS_Y, maxY);
        uinput_setup setup{};
        setup.id.bustype = BUS_USB;
        name.copy(setup.name, sizeof(setup.name) - 1);
        ok_ = ok_ && ioctl(fd_, UI_DEV_SETUP, &setup) == 0 && ioctl(fd_, UI_DEV_CREATE) == 0;
    }
    ~Panel() { close(fd_); }
    Panel(const Panel&) = delete;
    Panel& operator=(const Panel&) = delete;

    bool isThere() const { return ok_; }
    void place(int x, int y) {
        put(EV_ABS, ABS_X, x);
        put(EV_ABS, ABS_Y, y);
    }
    void touch(bool down) { put(EV_KEY, contact_, down ? 1 : 0); }
    void report() { put(EV_SYN, SYN_REPORT, 0); }

 private:
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
    void put(int type, int code, int value) {
        input_event event{};
        event.type = static_cast<std::uint16_t>(type);
        event.code = static_cast<std::uint16_t>(code);
        event.value = value;
        ok_ = ok_ && write(fd_, &event, sizeof(event)) == static_cast<ssize_t>(sizeof(event));
    }

    int fd_;
    int contact_;
    bool ok_ = true;
};

/// `panel touch|buttons MAXX MAXY NAME`: until its input ends. Lines: "down X Y", "move X Y", "up".
int runPanel(const std::string& name, bool buttons, int maxX, int maxY) {
    Panel panel(name, buttons, maxX, maxY);
    std::printf("panel %s %s\n", panel.isThere() ? "plugged" : "refused", name.c_str());
    for (std::string line; panel.isThere() && std::getline(std::cin, line);) {
        std::istringstream words(line);
        std::string word;
        int x = 0;
        int y = 0;
        words >> word >> x >> y;
        if (word != "up") {
            panel.place(x, y);
        }
        if (word != "move") {
            panel.touch(word == "down");
        }
        panel.report();
    }
    return panel.isThere() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    const std::string_view mode = argc > 2 ? argv[1] : "";
    if (mode == "box") {
        return runBox(argv[2]);
    }
    if (mode == "records") {
        return showRecords(argv[2]);
    }
    if (mode == "panel" && argc == 6) {
        return runPanel(argv[5], std::string_view(argv[2]) == "buttons", std::stoi(argv[3]),
                        std::stoi(argv[4]));
    }
    std::fputs(
        "usage: tavrik-target-guest box ADDRESS | records NODE | panel KIND MAXX MAXY NAME\n",
        stderr);
    return 2;
}
