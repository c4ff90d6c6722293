#include "subject.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <linux/input-event-codes.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "rig/daemon.h"

extern char** environ;

namespace {

constexpr const char* kAddress = "127.0.0.31";
constexpr const char* kSecondAddress = "127.0.0.32";
constexpr int kStartMilliseconds = 20000;  // under an instrument

/// A socket with room for a full-speed run.
int bindBox(const char* address, std::uint16_t port) {
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const int room = 8 << 20;
    setsockopt(fd, SOL_SOCKET, SO_RCVBUFFORCE, &room, sizeof room);
    const sockaddr_in own{AF_INET, htons(port), {inet_addr(address)}, {}};
    if (bind(fd, reinterpret_cast<const sockaddr*>(&own), sizeof own) != 0) {
        throw std::runtime_error(std::string("cannot bind ") + address);
    }
    return fd;
}

std::string programOf(const Subject::Options& options) {
    constexpr const char* kNames[] = {"/tavrik", "/bench/tavrik-plain-loop",
                                      "/bench/tavrik-batch-loop"};
    if (!options.build.empty()) {
        return options.build + kNames[static_cast<std::size_t>(options.program)];
    }
    return options.program == Program::kConsole     ? rig::Daemon::programPath()
           : options.program == Program::kPlainLoop ? PLAIN_LOOP
                                                    : BATCH_LOOP;
}

InputRecord record(int type, int code, int value) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return {static_cast<std::int32_t>(now.tv_sec), static_cast<std::int32_t>(now.tv_nsec / 1000),
            static_cast<std::uint16_t>(type), static_cast<std::uint16_t>(code), value};
}

}  // namespace

std::vector<InputRecord> key(bool down) {
    return {record(EV_KEY, KEY_A, down ? 1 : 0), record(EV_SYN, SYN_REPORT, 0)};
}

std::vector<InputRecord> movement(int dx, int dy) {
    return {record(EV_REL, REL_X, dx), record(EV_REL, REL_Y, dy), record(EV_SYN, SYN_REPORT, 0)};
}

std::vector<InputRecord> click(bool down) { return {record(EV_KEY, BTN_LEFT, down ? 1 : 0)}; }

Subject::Subject(const Options& options) : board_(std::make_unique<rig::Board>()) {
    // The boxes of two consoles must not meet: each subject has a port of its own.
    static std::uint16_t nextPort = 9000;
    port_ = nextPort++;
    box_ = bindBox(kAddress, port_);
    secondBox_ = bindBox(kSecondAddress, port_);
    prepareConsole(options.mice);
    for (int number = 0; number <= options.mice; ++number) {
        nodes_.push_back(open(board_->node(number).c_str(), O_RDWR | O_CLOEXEC));
    }
    const auto before = Clock::now();
    launch(options);
    awaitReady(options.program);
    started_ = Clock::now() - before;
    letSettle();
}

void Subject::prepareConsole(int mice) {
    const std::string offset = "-" + std::to_string(port_ - 80);
    board_->setWall({std::string("0,0,127.0.0.20#0,0,") + kAddress + offset + "#1,0," +
                     kSecondAddress + offset});
    board_->setLocalAddress("127.0.0.20");
    board_->setBoardName("BOARDB0002_002_R1");
    board_->setOsd(true);
    board_->plugKeyboard(0);
    for (int number = 1; number <= mice; ++number) {
        board_->plugMouse(number);
    }
}

void Subject::launch(const Options& options) {
    std::vector<std::string> words = options.before;
    words.push_back(programOf(options));
    if (options.program == Program::kConsole) {
        words.insert(words.end(), {"--root", board_->root().string()});
    } else {
        words.insert(words.end(), {kAddress, std::to_string(port_)});
        for (int number = 0; number <= options.mice; ++number) {
            words.push_back(board_->node(number).string());
        }
    }
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addchdir_np(&actions, board_->work().c_str());
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    if (options.log >= 0) {
        posix_spawn_file_actions_adddup2(&actions, options.log, 1);
    }
    const int problem =
        posix_spawnp(&pid_, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (problem != 0) {
        throw std::runtime_error("cannot start " + words[0]);
    }
}

/// The console tells its box the lights when it serves its devices; a loop is tried with a key.
void Subject::awaitReady(Program program) {
    if (program != Program::kConsole) {
        put(0, key(true));
    }
    if (!next(kStartMilliseconds)) {
        throw std::runtime_error("nothing arrives at the box");
    }
}

/// The query behind the lights, and the first key: it reads the lights and takes 50 ms for that.
void Subject::letSettle() const {
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    put(0, key(true));
    put(0, key(false));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    drop();
}

Subject::~Subject() {
    end();
    for (const int fd : nodes_) {
        close(fd);
    }
    close(box_);
    close(secondBox_);
}

void Subject::end() {
    if (pid_ > 0) {
        // One that runs it, such as strace, ends with it.
        const std::string id = std::to_string(pid_);
        pid_t child = 0;
        std::ifstream("/proc/" + id + "/task/" + id + "/children") >> child;
        kill(child > 0 ? child : pid_, SIGTERM);
        waitpid(pid_, nullptr, 0);
        pid_ = -1;
    }
}

void Subject::put(int node, const std::vector<InputRecord>& records) const {
    (void)!write(nodes_[static_cast<std::size_t>(node)], records.data(),
                 records.size() * sizeof(InputRecord));
}

std::optional<Arrival> Subject::next(int ms, bool second) const {
    const int fd = second ? secondBox_ : box_;
    pollfd waiting{fd, POLLIN, 0};
    if (ms >= 0 && poll(&waiting, 1, ms) < 1) {
        return std::nullopt;
    }
    Arrival arrival{{}, std::vector<std::uint8_t>(256)};
    const ssize_t got = recv(fd, arrival.bytes.data(), arrival.bytes.size(), MSG_DONTWAIT);
    arrival.when = Clock::now();
    arrival.bytes.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    return got > 0 ? std::optional(arrival) : std::nullopt;
}

void Subject::drop() const {
    while (next(0) || next(0, true)) {
    }
}

double Subject::cpuSeconds() const {
    clockid_t clock{};
    timespec used{};
    if (clock_getcpuclockid(pid_, &clock) != 0 || clock_gettime(clock, &used) != 0) {
        throw std::runtime_error("the program has ended");
    }
    return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
}

namespace {

long fieldOf(const std::filesystem::path& file, const std::string& field) {
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(field + ":")) {
            return std::atol(line.c_str() + field.size() + 1);
        }
    }
    return -1;
}

}  // namespace

long Subject::status(const std::string& field) const {
    return fieldOf("/proc/" + std::to_string(pid_) + "/status", field);
}

long Subject::wakeUps() const {
    long all = 0;
    for (const auto& task :
         std::filesystem::directory_iterator("/proc/" + std::to_string(pid_) + "/task")) {
        all += fieldOf(task.path() / "status", "voluntary_ctxt_switches");
    }
    return all;
}
