#pragma once

#include <netinet/in.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "rig/outside.h"

namespace rig {

using Milliseconds = std::chrono::milliseconds;

struct Endpoint {
    std::string address;     ///< dotted IPv4 text
    std::uint16_t port = 0;  ///< 0 lets the kernel choose
};

sockaddr_in socketAddress(const Endpoint& end);

/// A datagram that arrived.
struct Report {
    Endpoint at;                      ///< where it arrived
    std::vector<std::uint8_t> bytes;  ///< at most 2048
    std::string text;                 ///< the bytes in words, see words/message.h
    std::chrono::steady_clock::time_point when;
};

/// A software input box: it keeps every datagram that reaches one of its ports, except the "link"
/// queries, which it answers. Without an answer it is a plain recorder, as for the OSD's ports.
/// Any thread may call any member.
class Box {
 public:
    /// Called on the box's own thread for every report.
    using Observer = std::function<void(const Report&)>;

    /// Binds every end and starts listening. Throws std::system_error when a bind fails.
    explicit Box(std::vector<Endpoint> ends, std::optional<std::string> answer = std::nullopt,
                 Observer observer = {});

    /// A program of somebody else's in the place of the box: what it prints in a line is a report's
    /// text, behind a number the port. Its first line says that it listens; it is waited for.
    /// Throws std::system_error when it does not come.
    explicit Box(std::unique_ptr<OutsideProgram> program, Observer observer = {});
    ~Box();
    Box(const Box&) = delete;
    Box& operator=(const Box&) = delete;

    /// The text that a "link" query gets from now on; nothing: the box stays silent.
    void setAnswer(std::optional<std::string> answer);
    bool answers() const;

    /// Answers whoever asked last, at once. False when nobody asked yet.
    bool answerLate(std::string_view text) const;

    /// Takes the oldest report that was not taken yet, at `port` (0: at any), waiting at most
    /// `limit` for one. What comes to two ports at once is in no order.
    std::optional<Report> next(Milliseconds limit, std::uint16_t port = 0);

    /// The reports not taken yet, oldest first; they stay.
    std::vector<Report> pending() const;
    void clear();

    /// Waits until `count` link queries have come in all. False when `limit` passes first.
    bool waitForQueries(int count, Milliseconds limit);
    int queries() const;

    /// Sends `text` from the first end to `to`; an answer comes in as a report.
    bool send(const Endpoint& to, std::string_view text) const;

 private:
    struct Port {
        Endpoint at;
        int fd = -1;
    };

    void bindAll(std::vector<Endpoint> ends);
    void closeAll();
    void serve();
    void receive(const Port& port);
    void asked(const Port& port, const Endpoint& asker);
    void take(const Report& report);

    std::unique_ptr<OutsideProgram> program_;
    std::vector<Port> ports_;
    int stop_ = -1;  ///< eventfd, readable when the thread has to end
    Observer observer_;
    mutable std::mutex guard_;
    std::condition_variable changed_;
    std::optional<std::string> answer_;
    std::deque<Report> reports_;
    int queries_ = 0;
    Endpoint asker_;      ///< of the last query
    int askedPort_ = -1;  ///< descriptor of the port where it came in
    std::thread thread_;
};

}  // namespace rig
