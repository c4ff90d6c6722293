#include "rig/box.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <system_error>

#include "words/message.h"

namespace rig {
namespace {

constexpr std::size_t kLargestReport = 2048;
constexpr std::size_t kMostReports = 100000;
constexpr std::string_view kQuery = "link";

/// What a program in the place of a box tells in a line: a port, perhaps, and words.
Report told(const std::string& line) {
    Report report;
    report.when = std::chrono::steady_clock::now();
    const std::size_t digits = std::min(line.find_first_not_of("0123456789"), line.size());
    const bool hasPort = digits > 0 && digits < line.size() && line[digits] == ' ';
    report.at.port = static_cast<std::uint16_t>(hasPort ? std::atoi(line.c_str()) : 0);
    report.text = line.substr(hasPort ? digits + 1 : 0);
    return report;
}

bool sendFrom(int fd, const Endpoint& to, std::string_view text) {
    const sockaddr_in address = socketAddress(to);
    return sendto(fd, text.data(), text.size(), 0, reinterpret_cast<const sockaddr*>(&address),
                  sizeof(address)) == static_cast<ssize_t>(text.size());
}

}  // namespace

sockaddr_in socketAddress(const Endpoint& end) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(end.port);
    address.sin_addr.s_addr = inet_addr(end.address.c_str());
    return address;
}

Box::Box(std::vector<Endpoint> ends, std::optional<std::string> answer, Observer observer)
    : observer_(std::move(observer)), answer_(std::move(answer)) {
    bindAll(std::move(ends));
    stop_ = eventfd(0, EFD_CLOEXEC);
    thread_ = std::thread(&Box::serve, this);
}

Box::Box(std::unique_ptr<OutsideProgram> program, Observer observer)
    : program_(std::move(program)),
      ports_{{{}, program_->descriptor()}},
      observer_(std::move(observer)),
      answer_("its own") {
    constexpr int kStartMs = 10'000;
    if (!program_->waitForLine(kStartMs)) {
        throw std::system_error(ETIMEDOUT, std::generic_category(), "the program in its place");
    }
    stop_ = eventfd(0, EFD_CLOEXEC);
    thread_ = std::thread(&Box::serve, this);
}

Box::~Box() {
    eventfd_write(stop_, 1);
    thread_.join();
    if (!program_) {
        closeAll();
    }
    close(stop_);
}

void Box::bindAll(std::vector<Endpoint> ends) {
    for (Endpoint& end : ends) {
        const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        const sockaddr_in address = socketAddress(end);
        const auto* generic = reinterpret_cast<const sockaddr*>(&address);
        const std::string what = "box " + end.address + ":" + std::to_string(end.port);
        ports_.push_back({std::move(end), fd});
        if (fd < 0 || bind(fd, generic, sizeof(address)) != 0) {
            const int error = errno;
            closeAll();
            throw std::system_error(error, std::generic_category(), what);
        }
    }
}

void Box::closeAll() {
    for (const Port& port : ports_) {
        if (port.fd >= 0) {
            close(port.fd);
        }
    }
}

void Box::setAnswer(std::optional<std::string> answer) {
    const std::lock_guard hold(guard_);
    answer_ = std::move(answer);
}

bool Box::answers() const {
    const std::lock_guard hold(guard_);
    return answer_.has_value();
}

bool Box::answerLate(std::string_view text) const {
    const std::lock_guard hold(guard_);
    return askedPort_ >= 0 && sendFrom(askedPort_, asker_, text);
}

std::optional<Report> Box::next(Milliseconds limit, std::uint16_t port) {
    std::unique_lock hold(guard_);
    auto oldest = reports_.end();
    changed_.wait_for(hold, limit, [&] {
        oldest = std::find_if(reports_.begin(), reports_.end(), [port](const Report& report) {
            return port == 0 || report.at.port == port;
        });
        return oldest != reports_.end();
    });
    if (oldest == reports_.end()) {
        return std::nullopt;
    }
    Report report = std::move(*oldest);
    reports_.erase(oldest);
    return report;
}

std::vector<Report> Box::pending() const {
    const std::lock_guard hold(guard_);
    return {reports_.begin(), reports_.end()};
}

void Box::clear() {
    const std::lock_guard hold(guard_);
    reports_.clear();
}

bool Box::waitForQueries(int count, Milliseconds limit) {
    std::unique_lock hold(guard_);
    return changed_.wait_for(hold, limit, [this, count] { return queries_ >= count; });
}

int Box::queries() const {
    const std::lock_guard hold(guard_);
    return queries_;
}

bool Box::send(const Endpoint& to, std::string_view text) const {
    return sendFrom(ports_.front().fd, to, text);
}

void Box::serve() {
    std::vector<pollfd> waits;
    for (const Port& port : ports_) {
        waits.push_back({port.fd, POLLIN, 0});
    }
    waits.push_back({stop_, POLLIN, 0});
    while (poll(waits.data(), waits.size(), -1) >= 0 || errno == EINTR) {
        if (waits.back().revents != 0) {
            return;
        }
        for (std::size_t i = 0; i < ports_.size(); ++i) {
            if (waits[i].revents != 0) {
                receive(ports_[i]);
            }
            if (program_ && program_->hasEnded()) {
                waits[i].fd = -1;
            }
        }
    }
}

void Box::receive(const Port& port) {
    if (program_) {
        for (const std::string& line : program_->lines()) {
            take(told(line));
        }
        return;
    }
    std::array<std::uint8_t, kLargestReport> buffer{};
    sockaddr_in sender{};
    socklen_t length = sizeof(sender);
    auto* generic = reinterpret_cast<sockaddr*>(&sender);
    const ssize_t got =
        recvfrom(port.fd, buffer.data(), buffer.size(), MSG_DONTWAIT, generic, &length);
    if (got < 0) {
        return;
    }
    Report report{
        port.at, {buffer.begin(), buffer.begin() + got}, {}, std::chrono::steady_clock::now()};
    report.text = words::describe(report.bytes);
    if (report.text == kQuery) {
        asked(port, {inet_ntoa(sender.sin_addr), ntohs(sender.sin_port)});
    } else {
        take(report);
    }
}

void Box::asked(const Port& port, const Endpoint& asker) {
    std::optional<std::string> answer;
    {
        const std::lock_guard hold(guard_);
        ++queries_;
        asker_ = asker;
        askedPort_ = port.fd;
        answer = answer_;
    }
    changed_.notify_all();
    if (answer) {
        sendFrom(port.fd, asker, *answer);
    }
}

void Box::take(const Report& report) {
    {
        const std::lock_guard hold(guard_);
        if (reports_.size() < kMostReports) {
            reports_.push_back(report);
        }
    }
    changed_.notify_all();
    if (observer_) {
        observer_(report);
    }
}

}  // namespace rig
