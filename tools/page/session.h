#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <set>
#include <string>
#include <vector>

#include "page/hands.h"
#include "page/message.h"
#include "page/model.h"
#include "page/recording.h"
#include "page/server.h"
#include "page/stage.h"

namespace page {

/// The console behind the page: its world, who drives it, and what each viewer is told. Everything
/// on the server's thread, but the starting of a world and the tour.
class Session {
 public:
    using Clock = std::chrono::steady_clock;

    /// `isOwnNetwork`: every address may stand in a wall; otherwise those of 127.0.0.0/8 alone.
    /// `settings`: the text of a settings file; `users`: boxes of the user list; `scripts`: the
    /// folder of the tour.
    Session(std::string settings, std::vector<std::string> users, std::string scripts,
            bool isOwnNetwork);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    Server::Handlers handlers();
    /// Starts the console.
    void begin(Server& server);
    /// Ends it, when the server runs no more; the server is not called any more then.
    void end() { stage_.halt(); }

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
    void tryThing(const Said& said);
    void order(const std::string& text);
    void check(int id, const std::string& settings);
    void apply(int id, const std::string& settings);
    void watch();

    void startUsual();
    void begins(const rig::Plan& plan);
    void saw(const std::string& name, const rig::Report& report);
    void tell(int id, const nlohmann::json& message);
    void changed();

    const bool isOwnNetwork_;
    const std::vector<std::string> users_;
    std::string settings_;
    Server* server_ = nullptr;

    Stage stage_;
    Model model_;
    Recording recording_;
    Hands hands_{recording_};

    std::map<int, Viewer> viewers_;
    int driver_ = 0;
    std::set<std::string> goals_;
};

}  // namespace page
