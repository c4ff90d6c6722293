#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "page/message.h"
#include "page/model.h"
#include "page/recording.h"
#include "page/server.h"
#include "rig/world.h"

namespace page {

/// The console behind the page: its world, who drives it, and what each viewer is told. Everything
/// on the server's thread, but the starting of a world and the tour.
class Session {
 public:
    using Clock = std::chrono::steady_clock;

    /// `isOwnNetwork`: every address may stand in a wall; otherwise those of 127.0.0.0/8 alone.
    /// `settings`: the text of a settings file; `scripts`: the folder of the tour.
    Session(std::string settings, std::string scripts, bool isOwnNetwork);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    Server::Handlers handlers();
    /// Starts the console. The server outlives the session's last call to it.
    void begin(Server& server);

 private:
    struct Viewer {
        Clock::time_point heard;          ///< anything at all
        Clock::time_point active;         ///< a key, a movement
        unsigned long firstDatagram = 1;  ///< not yet told
    };

    void opened(int id);
    void said(int id, const std::string& text);
    void closed(int id);
    std::string state(int id);

    void carryOut(int id, const Said& said);
    void drive(int id);
    void input(const Said& said);
    void tryThing(const Said& said);
    void letGo();
    void emit(std::uint16_t type, std::uint16_t code, std::int32_t value, bool ends);
    void plug(const std::string& kind, bool isPlugged);
    void order(const std::string& text);
    void check(int id, const std::string& settings);
    void apply(int id, const std::string& settings);
    void tour();
    void watch();

    /// `settings`: the file that the console reads.
    void start(const rig::Plan& plan, const std::string& settings);
    void startUsual();
    rig::World::Observer reports();
    rig::Daemon::Observer lines();
    void halt();
    void tell(int id, const nlohmann::json& message);
    void changed();

    const std::string scripts_;
    const bool isOwnNetwork_;
    std::string settings_;
    Server* server_ = nullptr;

    rig::Plan plan_;
    std::unique_ptr<rig::World> world_;
    std::jthread worker_;
    unsigned generation_ = 0;  ///< of the world: what an older one says does not count
    bool isRunning_ = false;
    std::string notice_;  ///< one line for every viewer
    Model model_;
    Recording recording_;

    std::map<int, Viewer> viewers_;
    int driver_ = 0;
    std::set<std::uint16_t> held_;  ///< keys and buttons that the driver holds
    std::set<std::string> plugged_;
    std::set<std::string> goals_;
};

}  // namespace page
