#include "rig/board.h"

#include <fcntl.h>
#include <linux/input-event-codes.h>
#include <pty.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <sstream>
#include <system_error>
#include <utility>

#include "base/event_node.h"

namespace fs = std::filesystem;

namespace rig {
namespace {

constexpr const char* kListing = "proc/bus/input/devices";
constexpr const char* kFixedKeys[] = {"kUdpServerPort", "kActKeyEvent", "kHotkeymap",
                                      "kHotCmd0",       "kHotCmd1",     "kHotCmd2"};
constexpr std::size_t kFixedMapLines = 16;

[[noreturn]] void fail(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

/// One entry of the devices listing, in the kernel's form; the Handlers line ends in a blank.
std::string listingEntry(int number, const std::string& name, const std::string& handlers) {
    const std::string node = std::to_string(number);
    return "I: Bus=0003 Vendor=1d6b Product=0104 Version=0110\n"
           "N: Name=\"" +
           name +
           "\"\n"
           "P: Phys=usb-rig-" +
           node +
           "/input0\n"
           "S: Sysfs=/devices/rig/input" +
           node +
           "\n"
           "U: Uniq=\n"
           "H: Handlers=" +
           handlers + " event" + node +
           " \n"
           "B: PROP=0\n"
           "B: EV=120013\n\n";
}

}  // namespace

Board::Board() {
    std::string name = (fs::temp_directory_path() / "tavrik-board-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        fail(name);
    }
    root_ = name;
    for (const char* directory :
         {"data", "version", "dev/input", "proc/bus/input", "home", "work"}) {
        fs::create_directories(root_ / directory);
    }
    settings_["kUdpServerPort"] = "80";
    setBoardName("BOARDB0002_002_R1");
    setLocalAddress("127.0.0.1");
    setOsd(true);
    writeSettings();
    writeListing();
}

Board::~Board() {
    for (const Device& device : devices_) {
        if (device.master >= 0) {
            close(device.master);
        }
    }
    std::error_code ignored;
    fs::remove_all(root_, ignored);
}

fs::path Board::node(int number) const {
    return root_ / "dev/input" / ("event" + std::to_string(number));
}

void Board::setWall(const std::vector<std::string>& lines) {
    wall_ = lines;
    writeSettings();
}

void Board::setSetting(const std::string& key, const std::string& value) {
    settings_[key] = value;
    writeSettings();
}

void Board::setLocalAddress(std::string_view address) {
    write("data/net.ini", "kEth0Ip=" + std::string(address) + "\n");
}

void Board::setBoardName(std::string_view name) {
    write("version/hardware_info", "{\"board\": \"" + std::string(name) + "\"}\n");
}

void Board::setOsd(bool present) {
    if (present) {
        fs::create_directories(root_ / "home/QT_LIB/lib");
    } else {
        fs::remove_all(root_ / "home/QT_LIB");
    }
}

void Board::setUsers(const std::vector<std::string>& users) {
    if (users.empty()) {
        fs::remove(work() / "ip.txt");
        return;
    }
    std::string text = "IP{\r\n";
    for (const std::string& user : users) {
        text += user + "\r\n";
    }
    write("work/ip.txt", text + "}\r\n");
}

void Board::write(const fs::path& relative, std::string_view text) const {
    std::ofstream file(root_ / relative, std::ios::binary);
    file << text;
    if (!file.flush()) {
        fail((root_ / relative).string());
    }
}

std::string Board::read(const fs::path& relative) const {
    std::ostringstream text;
    text << std::ifstream(root_ / relative, std::ios::binary).rdbuf();
    return text.str();
}

void Board::writeSettings() const {
    std::string text;
    for (const char* key : kFixedKeys) {
        const auto found = settings_.find(key);
        text += std::string(key) + "=" + (found == settings_.end() ? "" : found->second) + "\n";
    }
    text += "kOutNum=" + std::to_string(wall_.size()) + "\n";
    for (std::size_t i = 0; i < std::max(wall_.size(), kFixedMapLines); ++i) {
        text += "kOutIpmap" + std::to_string(i) + "=" + (i < wall_.size() ? wall_[i] : "") + "\n";
    }
    write("data/tav_rik.ini", text);
}

void Board::writeListing() const {
    std::string text;
    for (const Device& device : devices_) {
        text += listingEntry(device.number, device.name, device.handlers);
    }
    write(std::string(kListing) + ".new", text);
    fs::rename(root_ / (std::string(kListing) + ".new"), root_ / kListing);
}

void Board::plugKeyboard(int number, const std::string& name) { plug(number, name, "sysrq kbd"); }

void Board::plugMouse(int number, const std::string& name) {
    plug(number, name, "mouse" + std::to_string(number));
}

void Board::plugTouch(int number, const std::string& panel) {
    plug(number, panel, "mouse" + std::to_string(number) + " js" + std::to_string(number));
}

void Board::plug(int number, const std::string& name, const std::string& handlers) {
    if (mkfifo(node(number).c_str(), 0600) != 0) {
        fail(node(number).string());
    }
    add({number, name, handlers, -1});
}

void Board::plugDead(int number, const std::string& name) {
    int master = -1;
    int slave = -1;
    std::array<char, 64> slaveName{};
    if (openpty(&master, &slave, slaveName.data(), nullptr, nullptr) != 0) {
        fail("pseudo terminal");
    }
    termios mode{};
    tcgetattr(slave, &mode);
    cfmakeraw(&mode);  // no echo: nothing written ever comes back
    tcsetattr(slave, TCSANOW, &mode);
    fcntl(master, F_SETFD, FD_CLOEXEC);
    fcntl(master, F_SETFL, O_NONBLOCK);
    close(slave);
    fs::create_symlink(slaveName.data(), node(number));
    add({number, name, "sysrq kbd", master});
}

void Board::add(Device device) {
    devices_.push_back(std::move(device));
    writeListing();
}

void Board::unplug(int number) {
    const auto at = std::find_if(devices_.begin(), devices_.end(), [number](const Device& device) {
        return device.number == number;
    });
    if (at == devices_.end()) {
        return;
    }
    const Device gone = *at;
    devices_.erase(at);
    writeListing();
    remove(gone);
}

void Board::unplugAll() {
    const std::vector<Device> gone = std::exchange(devices_, {});
    writeListing();
    for (const Device& device : gone) {
        remove(device);
    }
}

void Board::remove(const Device& device) const {
    fs::remove(node(device.number));
    if (device.master >= 0) {
        close(device.master);
    }
}

/// Opened for each record and without a reader of its own: a node keeps nothing that was put into
/// it while the daemon had it closed, as a real one.
bool Board::put(int number, const void* bytes, std::size_t length) const {
    const int fd = open(node(number).c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        return false;
    }
    const bool whole = ::write(fd, bytes, length) == static_cast<ssize_t>(length);
    close(fd);
    return whole;
}

bool Board::emit(int number, std::uint16_t type, std::uint16_t code, std::int32_t value,
                 std::optional<Stamp> stamp) const {
    timeval now{};
    gettimeofday(&now, nullptr);
    const Stamp time = stamp.value_or(
        Stamp{static_cast<std::int32_t>(now.tv_sec), static_cast<std::int32_t>(now.tv_usec)});
    const InputRecord record{time.seconds, time.microseconds, type, code, value};
    return put(number, &record, sizeof(record));
}

bool Board::emitPart(int number) const { return put(number, "short", 5); }

void Board::setLights(int number, unsigned bits) const {
    write(node(number).string().substr(root_.string().size() + 1) + ".leds", std::to_string(bits));
}

bool Board::key(int number, std::uint16_t code, bool down) const {
    return emit(number, EV_KEY, code, down ? 1 : 0) && emit(number, EV_SYN, SYN_REPORT, 0);
}

bool Board::click(int number, std::uint16_t code) const {
    return key(number, code, true) && key(number, code, false);
}

bool Board::move(int number, int dx, int dy) const {
    return (dx == 0 || emit(number, EV_REL, REL_X, dx)) &&
           (dy == 0 || emit(number, EV_REL, REL_Y, dy)) && emit(number, EV_SYN, SYN_REPORT, 0);
}

bool Board::wheel(int number, int steps) const {
    return emit(number, EV_REL, REL_WHEEL, steps) && emit(number, EV_SYN, SYN_REPORT, 0);
}

}  // namespace rig
