#include <linux/input-event-codes.h>

#include "rig/script_words.h"
#include "words/keys.h"

namespace rig {
namespace {

std::optional<int> nodeFor(words::EventCode code, const Plan& plan, int lastNode) {
    if (code.type == EV_SYN) {
        return lastNode < 0 ? std::nullopt : std::optional(lastNode);
    }
    const bool mouseButton =
        code.type == EV_KEY && code.code >= BTN_MOUSE && code.code < BTN_JOYSTICK;
    const bool contact = code.type == EV_KEY && code.code >= BTN_DIGI && code.code < BTN_WHEEL;
    Kind kind = Kind::kKeyboard;
    if (code.type == EV_REL || mouseButton) {
        kind = Kind::kMouse;
    } else if (code.type == EV_ABS || contact) {
        kind = Kind::kTouch;
    }
    const auto at =
        std::find_if(plan.devices.begin(), plan.devices.end(),
                     [kind](const PlannedDevice& device) { return device.kind == kind; });
    return at == plan.devices.end() ? std::nullopt : std::optional(at->number);
}

std::optional<std::int32_t> valueOf(words::EventCode code, std::string_view text) {
    if (code.type == EV_KEY) {
        constexpr std::string_view kValues[] = {"up", "down", "repeat"};
        const auto* at = std::find(std::begin(kValues), std::end(kValues), text);
        return at == std::end(kValues)
                   ? std::nullopt
                   : std::optional(static_cast<std::int32_t>(at - std::begin(kValues)));
    }
    return code.type == EV_SYN && text.empty() ? 0 : number<std::int32_t>(text);
}

std::optional<ScriptEvent> parseEvent(std::string_view text, const Plan& plan, int lastNode) {
    std::optional<int> node;
    const std::size_t colon = text.find(':');
    if (colon != std::string_view::npos) {
        node = nodeNumber(text.substr(0, colon));
        text = trim(text.substr(colon + 1));
    }
    const auto code = words::eventCode(takeWord(text));
    if (!code) {
        return std::nullopt;
    }
    if (colon == std::string_view::npos) {
        node = nodeFor(*code, plan, lastNode);
    }
    const auto value = valueOf(*code, text);
    if (!node || !value) {
        return std::nullopt;
    }
    return ScriptEvent{*node, code->type, code->code, *value};
}

}  // namespace

std::optional<std::vector<ScriptEvent>> parseEvents(std::string_view text, const Plan& plan,
                                                    int lastNode) {
    std::vector<ScriptEvent> events;
    for (;;) {
        const std::size_t end = text.find(';');
        const auto event = parseEvent(trim(text.substr(0, end)), plan, lastNode);
        if (!event) {
            return std::nullopt;
        }
        events.push_back(*event);
        lastNode = event->node;
        if (end == std::string_view::npos) {
            return events;
        }
        text.remove_prefix(end + 1);
    }
}

}  // namespace rig
