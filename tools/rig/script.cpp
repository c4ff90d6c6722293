#include "rig/script.h"

#include <fstream>
#include <sstream>
#include <utility>

#include "rig/script_words.h"

namespace rig {
namespace {

class Parser {
 public:
    explicit Parser(const std::string& name) {
        script_.name = name;
        script_.plan = usualPlan();
    }

    /// One line of the script, perhaps several steps joined by "=>"; false when it makes no sense.
    bool line(std::string_view text, int lineNumber);
    Script take() { return std::move(script_); }

 private:
    using Handler = bool (Parser::*)(std::string_view rest);
    struct Row {
        std::string_view word;
        Handler handle;
        Step::Kind kind = Step::Kind::kNothing;
    };
    static const Row kHeader[];
    static const Row kSteps[];

    bool step(std::string_view text, std::string_view word, std::string_view rest);

    bool wall(std::string_view rest);
    bool mode(std::string_view rest);
    bool device(std::string_view rest);
    bool box(std::string_view rest);
    bool user(std::string_view rest);
    bool local(std::string_view rest);
    bool setting(std::string_view rest);
    bool board(std::string_view rest);
    bool quick(std::string_view rest);

    bool textStep(std::string_view rest);
    bool placeStep(std::string_view rest);
    bool bareStep(std::string_view rest) { return rest.empty(); }
    bool plugStep(std::string_view rest);
    bool nodeStep(std::string_view rest);
    bool pauseStep(std::string_view text);
    bool eventsStep(std::string_view text);

    Script script_;
    Step step_;
    std::string_view word_;  ///< the first word of the line
    bool inHeader_ = true;
    bool ownWall_ = false;     ///< the script named its wall
    bool ownDevices_ = false;  ///< the script named its devices
    int lastNode_ = -1;        ///< of the last event
};

const Parser::Row Parser::kHeader[] = {
    {"wall", &Parser::wall},       {"mode", &Parser::mode},    {"keyboard", &Parser::device},
    {"mouse", &Parser::device},    {"touch", &Parser::device}, {"dead", &Parser::device},
    {"box", &Parser::box},         {"user", &Parser::user},    {"local", &Parser::local},
    {"setting", &Parser::setting}, {"board", &Parser::board},  {"quick", &Parser::quick},
};

const Parser::Row Parser::kSteps[] = {
    {"box", &Parser::placeStep, Step::Kind::kBox},
    {"osd", &Parser::placeStep, Step::Kind::kOsd},
    {"line", &Parser::textStep, Step::Kind::kLine},
    {"send", &Parser::placeStep, Step::Kind::kSend},
    {"reply", &Parser::textStep, Step::Kind::kReply},
    {"nothing", &Parser::bareStep, Step::Kind::kNothing},
    {"plug", &Parser::plugStep, Step::Kind::kPlug},
    {"unplug", &Parser::nodeStep, Step::Kind::kUnplug},
    {"answer", &Parser::placeStep, Step::Kind::kAnswer},
    {"late", &Parser::placeStep, Step::Kind::kLate},
    {"short", &Parser::nodeStep, Step::Kind::kShort},
    {"lights", &Parser::nodeStep, Step::Kind::kLights},
};

/// "ADDRESS PORT ...", which tells a box of the header from an expectation.
bool namesPort(std::string_view rest) {
    takeWord(rest);
    return number<std::uint16_t>(takeWord(rest)).has_value();
}

bool Parser::line(std::string_view text, int lineNumber) {
    constexpr std::string_view kThen = " => ";
    text = trim(text);
    if (text.empty() || text.front() == '#') {
        return true;
    }
    if (const std::size_t then = text.find(kThen); then != std::string_view::npos) {
        return line(text.substr(0, then), lineNumber) &&
               line(text.substr(then + kThen.size()), lineNumber);
    }
    std::string_view rest = text;
    word_ = takeWord(rest);
    const Row* row = inHeader_ ? find(kHeader, word_) : nullptr;
    if (row != nullptr && (word_ != "box" || namesPort(rest))) {
        return (this->*row->handle)(rest);
    }
    inHeader_ = false;
    step_ = {};
    step_.line = lineNumber;
    const bool good = step(text, word_, rest);
    script_.steps.push_back(std::move(step_));
    return good;
}

bool Parser::step(std::string_view text, std::string_view word, std::string_view rest) {
    if (const Row* row = find(kSteps, word)) {
        step_.kind = row->kind;
        return (this->*row->handle)(rest);
    }
    return text.front() == '+' ? pauseStep(text) : eventsStep(text);
}

bool Parser::wall(std::string_view rest) {
    if (!std::exchange(ownWall_, true)) {
        script_.plan.wall.clear();
    }
    if (rest != "none") {
        script_.plan.wall.emplace_back(rest);
    }
    return !rest.empty();
}

bool Parser::mode(std::string_view rest) {
    script_.plan.osd = rest == "osd";
    return rest == "osd" || rest == "dma";
}

/// "keyboard event0", "touch event2 Siliconworks": the kind is the line's first word.
bool Parser::device(std::string_view rest) {
    if (inHeader_ && !std::exchange(ownDevices_, true)) {
        script_.plan.devices.clear();
    }
    struct KindRow {
        std::string_view word;
        Kind kind;
    };
    constexpr KindRow kKinds[] = {{"keyboard", Kind::kKeyboard},
                                  {"mouse", Kind::kMouse},
                                  {"touch", Kind::kTouch},
                                  {"dead", Kind::kDead}};
    const KindRow* row = find(kKinds, word_);
    const auto node = nodeNumber(takeWord(rest));
    if (row == nullptr || !node) {
        return false;
    }
    step_.device = {row->kind, *node, unquote(rest)};
    if (inHeader_) {
        script_.plan.devices.push_back(step_.device);
    }
    return true;
}

bool Parser::box(std::string_view rest) {
    const std::string address(takeWord(rest));
    const auto port = number<std::uint16_t>(takeWord(rest));
    const bool silent = rest.empty() || rest == "silent";
    script_.plan.boxes.push_back(
        {{address, port.value_or(0)}, silent ? std::nullopt : std::optional(unquote(rest))});
    return port.has_value();
}

bool Parser::user(std::string_view rest) {
    script_.plan.users.emplace_back(rest);
    return !rest.empty();
}

bool Parser::local(std::string_view rest) {
    script_.plan.local = rest;
    return !rest.empty();
}

bool Parser::setting(std::string_view rest) {
    const std::size_t equals = rest.find('=');
    if (equals == std::string_view::npos) {
        return false;
    }
    script_.plan.settings[std::string(rest.substr(0, equals))] = rest.substr(equals + 1);
    return true;
}

bool Parser::board(std::string_view rest) {
    script_.plan.board = unquote(rest);
    return !rest.empty();
}

bool Parser::quick(std::string_view rest) {
    script_.quick = true;
    return rest.empty();
}

bool Parser::textStep(std::string_view rest) {
    step_.text = step_.kind == Step::Kind::kLine ? unquote(rest) : std::string(rest);
    return !rest.empty();
}

/// A place, then a text; only a box's answer may be empty.
bool Parser::placeStep(std::string_view rest) {
    step_.where = takeWord(rest);
    step_.text = step_.kind == Step::Kind::kSend ? unquote(rest) : std::string(rest);
    const bool port = step_.kind == Step::Kind::kOsd || step_.kind == Step::Kind::kSend;
    return !step_.where.empty() && (!port || number<std::uint16_t>(step_.where)) &&
           (!rest.empty() || step_.kind == Step::Kind::kAnswer);
}

bool Parser::plugStep(std::string_view rest) {
    word_ = takeWord(rest);
    return device(rest);
}

/// A node; only lights need a text after it.
bool Parser::nodeStep(std::string_view rest) {
    const auto node = nodeNumber(takeWord(rest));
    step_.device.number = node.value_or(0);
    step_.text = rest;
    const bool lights = rest == "none" || rest == "caps" || rest == "num" || rest == "caps+num";
    return node && (step_.kind == Step::Kind::kLights ? lights : rest.empty());
}

bool Parser::pauseStep(std::string_view text) {
    step_.kind = Step::Kind::kPause;
    const auto count = text.ends_with("ms") ? number<std::uint32_t>(text.substr(1, text.size() - 3))
                                            : std::nullopt;
    step_.pause = Milliseconds(count.value_or(0));
    return count.has_value();
}

bool Parser::eventsStep(std::string_view text) {
    step_.kind = Step::Kind::kEmit;
    auto events = parseEvents(text, script_.plan, lastNode_);
    if (events) {
        step_.events = std::move(*events);
        lastNode_ = step_.events.back().node;
    }
    return events.has_value();
}

}  // namespace

ParsedScript parseScript(std::string_view text, const std::string& name) {
    Parser parser(name);
    for (int number = 1; !text.empty(); ++number) {
        const std::size_t end = text.find('\n');
        const std::string_view line = text.substr(0, end);
        if (!parser.line(line, number)) {
            return {std::nullopt, name + ":" + std::to_string(number) +
                                      ": makes no sense: " + std::string(trim(line))};
        }
        text = end == std::string_view::npos ? "" : text.substr(end + 1);
    }
    return {parser.take(), {}};
}

ParsedScript loadScript(const std::filesystem::path& path) {
    std::ostringstream text;
    if (!(text << std::ifstream(path).rdbuf())) {
        return {std::nullopt, path.string() + ": cannot be read"};
    }
    return parseScript(text.str(), path.filename());
}

}  // namespace rig
