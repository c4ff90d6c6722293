#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "rig/world.h"

/// Golden scripts: what goes in and what must come out, one step a line.
/// tools/rig/SCRIPTS.md describes them for their writers.
namespace rig {

struct ScriptEvent {
    int node = 0;  ///< the number of /dev/input/eventN
    std::uint16_t type = 0;
    std::uint16_t code = 0;
    std::int32_t value = 0;
};

struct Step {
    enum class Kind {
        kEmit,     ///< events
        kPause,    ///< pause
        kBox,      ///< expects `text` at the box `where` ("address" or "address:port")
        kOsd,      ///< expects `text` at the recorder `where` (a port)
        kLine,     ///< expects the line `text` of the daemon
        kSend,     ///< sends `text` to the daemon's port `where`
        kReply,    ///< expects `text` as the answer to a command
        kNothing,  ///< expects silence at every box and recorder
        kPlug,     ///< device
        kUnplug,   ///< device.number
        kAnswer,   ///< the box `where` answers `text` from now on; empty: stays silent
        kLate,     ///< the box `where` answers the last query with `text`, now
        kShort,    ///< device.number gives less than a record
        kLights,  ///< the keyboard device.number has the lights `text`: caps, num, caps+num or none
    };

    int line = 0;  ///< in the script, from 1
    Kind kind = Kind::kNothing;
    std::string where;
    std::string text;
    std::vector<ScriptEvent> events;
    Milliseconds pause{0};
    PlannedDevice device;
};

struct Script {
    std::string name;  ///< for messages
    Plan plan;
    bool quick = false;  ///< pauses move the records' time only
    std::vector<Step> steps;
};

struct ParsedScript {
    std::optional<Script> script;
    std::string problem;  ///< "name:line: what is wrong", when there is no script
};

/// Pure.
ParsedScript parseScript(std::string_view text, const std::string& name);

/// Reads the script file `path`; its messages bear the file's name. One that cannot be read is a
/// problem too.
ParsedScript loadScript(const std::filesystem::path& path);

/// Starts the daemon in `world`, which was made from script.plan, and plays the steps. Returns what
/// did not go as written, one text a fault ("name:line: expected ..., got ..."); it gives up after
/// five.
std::vector<std::string> runScript(const Script& script, World& world, Daemon::Observer lines = {});

}  // namespace rig
