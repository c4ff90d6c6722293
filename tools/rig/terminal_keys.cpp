#include "rig/terminal_keys.h"

#include <linux/input-event-codes.h>

#include <algorithm>
#include <cctype>
#include <optional>

#include "words/keys.h"

namespace rig {
namespace {

constexpr int kStep = 20;   // pixels a press of Alt+arrow
constexpr int kLeap = 400;  // with Shift besides
constexpr char kEscape = '\x1b';

struct Sequence {
    std::string_view bytes;  ///< after the escape character
    std::uint16_t code;
};

/// What terminals send for keys without a character (xterm, rxvt and the Linux console).
constexpr Sequence kSequences[] = {
    {"[A", KEY_UP},      {"[B", KEY_DOWN},      {"[C", KEY_RIGHT},   {"[D", KEY_LEFT},
    {"OA", KEY_UP},      {"OB", KEY_DOWN},      {"OC", KEY_RIGHT},   {"OD", KEY_LEFT},
    {"[H", KEY_HOME},    {"[F", KEY_END},       {"OH", KEY_HOME},    {"OF", KEY_END},
    {"[1~", KEY_HOME},   {"[4~", KEY_END},      {"[2~", KEY_INSERT}, {"[3~", KEY_DELETE},
    {"[5~", KEY_PAGEUP}, {"[6~", KEY_PAGEDOWN}, {"OP", KEY_F1},      {"OQ", KEY_F2},
    {"OR", KEY_F3},      {"OS", KEY_F4},        {"[[A", KEY_F1},     {"[[B", KEY_F2},
    {"[[C", KEY_F3},     {"[[D", KEY_F4},       {"[[E", KEY_F5},     {"[11~", KEY_F1},
    {"[12~", KEY_F2},    {"[13~", KEY_F3},      {"[14~", KEY_F4},    {"[15~", KEY_F5},
    {"[17~", KEY_F6},    {"[18~", KEY_F7},      {"[19~", KEY_F8},    {"[20~", KEY_F9},
    {"[21~", KEY_F10},   {"[23~", KEY_F11},     {"[24~", KEY_F12},
};

/// The same keys with Alt held.
constexpr Sequence kAltSequences[] = {
    {"[1;3A", KEY_UP},    {"[1;3B", KEY_DOWN},     {"[1;3C", KEY_RIGHT},
    {"[1;3D", KEY_LEFT},  {"[5;3~", KEY_PAGEUP},   {"[6;3~", KEY_PAGEDOWN},
    {"\x1b[A", KEY_UP},   {"\x1b[B", KEY_DOWN},    {"\x1b[C", KEY_RIGHT},
    {"\x1b[D", KEY_LEFT}, {"\x1b[5~", KEY_PAGEUP}, {"\x1b[6~", KEY_PAGEDOWN},
};

/// And with Shift besides.
constexpr Sequence kLeapSequences[] = {
    {"[1;4A", KEY_UP}, {"[1;4B", KEY_DOWN}, {"[1;4C", KEY_RIGHT}, {"[1;4D", KEY_LEFT}};

struct Mark {
    char plain;
    char shifted;
    std::uint16_t code;
};

/// Keys with two characters, on a US keyboard.
constexpr Mark kMarks[] = {
    {'1', '!', KEY_1},         {'2', '@', KEY_2},           {'3', '#', KEY_3},
    {'4', '$', KEY_4},         {'5', '%', KEY_5},           {'6', '^', KEY_6},
    {'7', '&', KEY_7},         {'8', '*', KEY_8},           {'9', '(', KEY_9},
    {'0', ')', KEY_0},         {'-', '_', KEY_MINUS},       {'=', '+', KEY_EQUAL},
    {'[', '{', KEY_LEFTBRACE}, {']', '}', KEY_RIGHTBRACE},  {'\\', '|', KEY_BACKSLASH},
    {';', ':', KEY_SEMICOLON}, {'\'', '"', KEY_APOSTROPHE}, {'`', '~', KEY_GRAVE},
    {',', '<', KEY_COMMA},     {'.', '>', KEY_DOT},         {'/', '?', KEY_SLASH},
};

struct Plain {
    char character;
    std::uint16_t code;
};

constexpr Plain kPlain[] = {{' ', KEY_SPACE},
                            {'\t', KEY_TAB},
                            {'\r', KEY_ENTER},
                            {'\x7f', KEY_BACKSPACE},
                            {kEscape, KEY_ESC}};

std::uint16_t letterCode(char letter) {
    const int upper = std::toupper(static_cast<unsigned char>(letter));
    return words::eventCode(std::string("KEY_") + static_cast<char>(upper))->code;
}

std::optional<Typed> character(char typed) {
    if (typed == '\x03') {
        return Typed{Typed::Kind::kQuit, 0, {}, 0, 0};
    }
    for (const Plain& plain : kPlain) {
        if (plain.character == typed) {
            return Typed{Typed::Kind::kKey, plain.code, {}, 0, 0};
        }
    }
    for (const Mark& mark : kMarks) {
        if (mark.plain == typed) {
            return Typed{Typed::Kind::kKey, mark.code, {}, 0, 0};
        }
        if (mark.shifted == typed) {
            return Typed{Typed::Kind::kKey, mark.code, {KEY_LEFTSHIFT}, 0, 0};
        }
    }
    if (typed >= 'a' && typed <= 'z') {
        return Typed{Typed::Kind::kKey, letterCode(typed), {}, 0, 0};
    }
    if (typed >= 'A' && typed <= 'Z') {
        return Typed{Typed::Kind::kKey, letterCode(typed), {KEY_LEFTSHIFT}, 0, 0};
    }
    if (typed >= 1 && typed <= 26) {
        const char letter = static_cast<char>('a' + typed - 1);
        return Typed{Typed::Kind::kKey, letterCode(letter), {KEY_LEFTCTRL}, 0, 0};
    }
    return std::nullopt;
}

/// Alt with a key that has no character: the pointer.
Typed pointerAction(std::uint16_t code, int step = kStep) {
    switch (code) {
        case KEY_UP:
            return {Typed::Kind::kMove, 0, {}, 0, -step};
        case KEY_DOWN:
            return {Typed::Kind::kMove, 0, {}, 0, step};
        case KEY_LEFT:
            return {Typed::Kind::kMove, 0, {}, -step, 0};
        case KEY_RIGHT:
            return {Typed::Kind::kMove, 0, {}, step, 0};
        default:
            return {Typed::Kind::kWheel, 0, {}, 0, code == KEY_PAGEUP ? 1 : -1};
    }
}

/// Alt with a key that has a character.
std::optional<Typed> altCharacter(char typed) {
    if (typed == '\r') {
        return Typed{Typed::Kind::kClick, BTN_LEFT, {}, 0, 0};
    }
    if (typed == '\x7f') {
        return Typed{Typed::Kind::kClick, BTN_RIGHT, {}, 0, 0};
    }
    auto action = character(typed);
    if (action && action->kind == Typed::Kind::kKey) {
        action->held.insert(action->held.begin(), KEY_LEFTALT);
    }
    return action;
}

template <class Rows>
const Sequence* match(const Rows& rows, std::string_view input) {
    const auto* at = std::find_if(std::begin(rows), std::end(rows), [input](const Sequence& row) {
        return input.starts_with(row.bytes);
    });
    return at == std::end(rows) ? nullptr : at;
}

/// Takes one action off what follows an escape character.
std::optional<Typed> afterEscape(std::string_view& input) {
    if (const Sequence* row = match(kAltSequences, input)) {
        input.remove_prefix(row->bytes.size());
        return pointerAction(row->code);
    }
    if (const Sequence* row = match(kLeapSequences, input)) {
        input.remove_prefix(row->bytes.size());
        return pointerAction(row->code, kLeap);
    }
    if (const Sequence* row = match(kSequences, input)) {
        input.remove_prefix(row->bytes.size());
        return Typed{Typed::Kind::kKey, row->code, {}, 0, 0};
    }
    if (input.starts_with("[") || input.starts_with("O")) {
        const auto end = std::find_if(input.begin() + 1, input.end(),
                                      [](char c) { return c >= '@' && c <= '~'; });
        if (end != input.end()) {  // a sequence of a key that the rig does not know
            input.remove_prefix(static_cast<std::size_t>(end - input.begin()) + 1);
            return std::nullopt;
        }
    }
    const char next = input.front();
    input.remove_prefix(1);
    return next == kEscape ? character(kEscape) : altCharacter(next);
}

}  // namespace

std::vector<Typed> typedKeys(std::string_view input) {
    std::vector<Typed> actions;
    while (!input.empty()) {
        const char first = input.front();
        input.remove_prefix(1);
        auto action = first == kEscape && !input.empty() ? afterEscape(input) : character(first);
        if (action) {
            actions.push_back(std::move(*action));
        }
    }
    return actions;
}

}  // namespace rig
