#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "page/place.h"

/// The page's web server: files, and one line of messages to each viewer. Everything is called on
/// the thread that runs it, unless it says otherwise.
namespace page {

class Server {
 public:
    static constexpr std::size_t kLargestMessage = 262'144;
    static constexpr int kMostViewers = 8;

    struct Handlers {
        std::function<void(int viewer)> opened;
        std::function<void(int viewer, const std::string& text)> said;
        std::function<void(int viewer)> closed;
        /// The latest state for a viewer, asked for when it can take one; empty: nothing is new.
        std::function<std::string(int viewer)> state;
    };

    /// Serves the files of the folder `files` and "/socket" on a listening socket, which it takes
    /// over.
    Server(int listening, Place place, std::string files, Handlers handlers);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// Until end() or a signal that ends programs (SIGINT, SIGTERM, SIGHUP).
    void run();
    void end();  ///< any thread

    /// Calls `action` on the server's thread. Any thread.
    void post(std::function<void()> action);
    /// Calls `action` again and again, until the server ends.
    void every(std::chrono::milliseconds period, const std::function<void()>& action);

    /// Sends a message of its own to one viewer; a viewer that does not take them is dropped.
    void send(int viewer, std::string text);
    /// There is a new state: each viewer is given the latest as soon as it can take it, at most 60
    /// times a second.
    void changed();

    class Work;

 private:
    std::unique_ptr<Work> work_;
};

}  // namespace page
