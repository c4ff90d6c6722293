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

Box::~Box() {
    eventfd_write(stop_, 1);
    thread_.join();
    closeAll();
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
        }
    }
}

void Box::receive(const Port& port) {
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
    std::optional<std::string> answer;
    {
        const std::lock_guard hold(guard_);
        if (report.text == kQuery) {
            ++queries_;
            asker_ = {inet_ntoa(sender.sin_addr), ntohs(sender.sin_port)};
            askedPort_ = port.fd;
            answer = answer_;
        } else if (reports_.size() < kMostReports) {
            reports_.push_back(report);
        }
    }
    changed_.notify_all();
    if (answer) {
        sendFrom(port.fd, {inet_ntoa(sender.sin_addr), ntohs(sender.sin_port)}, *answer);
    }
    if (observer_ && report.text != kQuery) {
        observer_(report);
    }
}

}  // namespace rig
