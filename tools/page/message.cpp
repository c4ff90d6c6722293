#include "page/message.h"

#include <linux/input-event-codes.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <nlohmann/json.hpp>

#include "words/keys.h"

namespace page {
namespace {

using nlohmann::json;
using Kind = Said::Kind;

struct KindRow {
    std::string_view word;
    Kind kind;
};
constexpr std::array<KindRow, 16> kKinds{{{"key", Kind::kKey},
                                          {"move", Kind::kMove},
                                          {"button", Kind::kButton},
                                          {"wheel", Kind::kWheel},
                                          {"beat", Kind::kBeat},
                                          {"letgo", Kind::kLetGo},
                                          {"drive", Kind::kDrive},
                                          {"command", Kind::kCommand},
                                          {"plug", Kind::kPlug},
                                          {"unplug", Kind::kUnplug},
                                          {"answer", Kind::kAnswer},
                                          {"unfold", Kind::kUnfold},
                                          {"check", Kind::kCheck},
                                          {"apply", Kind::kApply},
                                          {"tour", Kind::kTour},
                                          {"save", Kind::kSave}}};

/// Names that differ from the kernel's by more than their case.
struct CodeRow {
    std::string_view code, name;
};
constexpr CodeRow kCodes[] = {{"Escape", "ESC"},
                              {"Minus", "MINUS"},
                              {"BracketLeft", "LEFTBRACE"},
                              {"BracketRight", "RIGHTBRACE"},
                              {"Quote", "APOSTROPHE"},
                              {"Backquote", "GRAVE"},
                              {"Period", "DOT"},
                              {"IntlBackslash", "102ND"},
                              {"ScrollLock", "SCROLLLOCK"},
                              {"ControlLeft", "LEFTCTRL"},
                              {"ControlRight", "RIGHTCTRL"},
                              {"ShiftLeft", "LEFTSHIFT"},
                              {"ShiftRight", "RIGHTSHIFT"},
                              {"AltLeft", "LEFTALT"},
                              {"AltRight", "RIGHTALT"},
                              {"MetaLeft", "LEFTMETA"},
                              {"MetaRight", "RIGHTMETA"},
                              {"ContextMenu", "COMPOSE"},
                              {"PrintScreen", "SYSRQ"},
                              {"ArrowUp", "UP"},
                              {"ArrowDown", "DOWN"},
                              {"ArrowLeft", "LEFT"},
                              {"ArrowRight", "RIGHT"},
                              {"NumpadAdd", "KPPLUS"},
                              {"NumpadSubtract", "KPMINUS"},
                              {"NumpadMultiply", "KPASTERISK"},
                              {"NumpadDivide", "KPSLASH"},
                              {"NumpadDecimal", "KPDOT"},
                              {"NumpadEnter", "KPENTER"},
                              {"NumpadEqual", "KPEQUAL"},
                              {"AudioVolumeMute", "MUTE"},
                              {"AudioVolumeUp", "VOLUMEUP"},
                              {"AudioVolumeDown", "VOLUMEDOWN"}};

/// A whole number of the object within `most` on both sides, otherwise 0.
int numberIn(const json& object, const char* name, int most) {
    const auto found = object.find(name);
    if (found == object.end() || !found->is_number()) {
        return 0;
    }
    const double value = found->get<double>();
    return value >= -most && value <= most ? static_cast<int>(value) : 0;
}

std::string textIn(const json& object, const char* name) {
    const auto found = object.find(name);
    return found != object.end() && found->is_string() ? found->get<std::string>() : "";
}

}  // namespace

std::optional<std::uint16_t> keyOfCode(std::string_view code) {
    std::string name;
    const auto* const row = std::ranges::find(kCodes, code, &CodeRow::code);
    if (row != std::end(kCodes)) {
        name = row->name;
    } else if (code.starts_with("Key") || code.starts_with("Digit")) {
        name = code.substr(code.starts_with("Key") ? 3 : 5);
    } else {
        name = code.starts_with("Numpad") ? "KP" + std::string(code.substr(6)) : code;
        std::ranges::transform(name, name.begin(), [](unsigned char letter) {
            return static_cast<char>(std::toupper(letter));
        });
    }
    const auto event = words::eventCode("KEY_" + name);
    return event && event->type == EV_KEY ? std::optional(event->code) : std::nullopt;
}

std::optional<Said> parseSaid(std::string_view text) {
    constexpr int kFarthest = 10'000, kMostSteps = 127, kMostDatagrams = 2'000'000'000;
    const json object = json::parse(text, nullptr, false);
    if (!object.is_object()) {
        return std::nullopt;
    }
    const auto* const row = std::ranges::find(kKinds, textIn(object, "t"), &KindRow::word);
    if (row == kKinds.end()) {
        return std::nullopt;
    }
    Said said{row->kind,
              0,
              object.value("down", json()) == true,
              0,
              0,
              textIn(object, "text"),
              textIn(object, "where")};
    if (said.kind == Kind::kKey) {
        const auto code = keyOfCode(textIn(object, "code"));
        if (!code) {
            return std::nullopt;
        }
        said.code = *code;
    } else if (said.kind == Kind::kButton) {
        constexpr std::uint16_t kButtons[] = {BTN_LEFT, BTN_MIDDLE, BTN_RIGHT};
        const int number = numberIn(object, "n", 2);
        if (number < 0) {
            return std::nullopt;
        }
        said.code = kButtons[number];
    }
    const bool isUnfold = said.kind == Kind::kUnfold;
    said.x = numberIn(object, "x", isUnfold ? kMostDatagrams : kFarthest);
    said.y = numberIn(object, "y", said.kind == Kind::kWheel ? kMostSteps : kFarthest);
    return said;
}

}  // namespace page
