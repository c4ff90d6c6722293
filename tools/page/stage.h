#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

#include "page/server.h"
#include "rig/world.h"

namespace page {

/// What the page shows: a console, or one golden script after the other. On the server's thread,
/// which goes on while a console starts.
class Stage {
 public:
    /// Called on the server's thread.
    struct Events {
        std::function<void(const rig::Plan&)> begins;  ///< another wall is shown
        std::function<void(const std::string& name, const rig::Report& report)> report;
        std::function<void(std::string_view line)> line;  ///< those of the daemon that tell a mode
        std::function<void()> changed;                    ///< world() or notice()
        std::function<void()> tourEnds;
    };

    /// `scripts`: the folder of the tour.
    Stage(std::string scripts, Events events);
    ~Stage() { halt(); }
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    /// Before anything else; the server outlives the last call but halt().
    void setServer(Server& server) { server_ = &server; }

    /// A console with the plan's wall, which reads `settings`.
    void start(const rig::Plan& plan, const std::string& settings);
    /// Golden scripts, each with its first comment as the notice.
    void tour();
    void halt();

    /// The console that takes input now; null when there is none.
    rig::World* world() const { return isRunning_ ? world_.get() : nullptr; }
    /// One line for every viewer.
    const std::string& notice() const { return notice_; }
    void setNotice(std::string notice) { notice_ = std::move(notice); }

 private:
    rig::World::Observer reports();
    rig::Daemon::Observer lines();
    void playAll(const std::stop_token& end, unsigned generation);
    /// Calls `action` on the server's thread, unless something else is shown by then.
    void later(unsigned generation, std::function<void()> action);

    const std::string scripts_;
    const Events events_;
    Server* server_ = nullptr;
    unsigned generation_ = 0;  ///< of what is shown: what an older one says does not count
    std::unique_ptr<rig::World> world_;
    std::jthread worker_;
    bool isRunning_ = false;
    std::string notice_;
};

}  // namespace page
