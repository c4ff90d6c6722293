#include "simulated/console.h"

#include <arpa/inet.h>
#include <linux/input-event-codes.h>

#include <algorithm>

#include "base/path_prefix.h"
#include "base/state.h"
#include "control/hotkey_table.h"
#include "remote/current_screen.h"
#include "remote/handover.h"
#include "remote/lights.h"
#include "remote/picture.h"
#include "remote/selection.h"
#include "remote/wall_map.h"
#include "silence.h"
#include "simulated/doubles.h"
#include "simulated/fresh_state.h"
#include "simulated/guards.h"

namespace simulated {

namespace {

struct Box {
    const char* address;
    int offset;  ///< of its ports
    bool user;   ///< of the user address list
};
constexpr std::array<Box, 5> kBoxes{{{"10.0.0.31", 0, false},
                                     {"10.0.0.32", 100, false},
                                     {"10.0.0.33", 0, false},
                                     {"10.0.0.34", 0, true},
                                     {"10.0.0.41", 7, false}}};
constexpr const char* kWall[] = {
    "0,0,10.0.0.1#0,0,10.0.0.31#1,0,10.0.0.32-100#0,1,10.0.0.33#1,1,10.0.0.34",
    "1,0,10.0.0.2#0,0,10.0.0.41-7"};

/// How a box reads a report: head and length tell the form, then where modifiers, usage and buttons
/// stand.
struct Form {
    std::string_view head;
    std::size_t size, modifiers, usage, buttons;
    bool user;
};
constexpr std::size_t kNone = 0;
constexpr std::array<Form, 5> kForms{{{{"\x57\xAB\x01", 3}, 11, 3, 5, kNone, false},
                                      {{"\x57\xAB\x04", 3}, 10, kNone, kNone, 4, false},
                                      {{"\x57\xAB\x02", 3}, 7, kNone, kNone, 3, false},
                                      {{"\x4B\x00\x01", 3}, 12, 4, 6, kNone, true},
                                      {{"\x4B\x00\x02", 3}, 11, kNone, kNone, 4, true}}};
constexpr std::size_t kKeysForm = 0, kAbsolute = 1, kRelative = 2, kUserKeys = 3, kUserPointer = 4;

constexpr int kUserPort = 2000, kOsdPorts[] = {41237, 41238};
constexpr std::int32_t kPanelRange = 4096;

Place placeOf(const BoxInControl& box, bool isKey) {
    const std::size_t pointer = box.rel_enable ? kRelative : kAbsolute;
    return box.is_user_ip ? Place{box.curIp.c_str(), kUserPort, isKey ? kUserKeys : kUserPointer}
                          : Place{box.curIp.c_str(), box.port(), isKey ? kKeysForm : pointer};
}

}  // namespace

Console::Console(const Options& options)
    : options_(options),
      state_{.console = console_,
             .place = currentInfo,
             .hotkeys = hotkeyinfo_,
             .osdIsHere = options.osdIsHere,
             .altTaps = !options.osdIsHere,
             .shiftTaps = !options.osdIsHere,
             .box = {},
             .keys = {},
             .releaseEverything = options.releaseEverything} {
    const tools::Silence silence;
    setPathPrefix("/nowhere");  // there are no settings, and no place for them
    for (auto [socket, known] : {std::pair{&sockets_[0], &InputSocket},
                                 {&sockets_[1], &InputViSocket},
                                 {&sockets_[2], &KvmSetSocket}}) {
        socket->CreateUDPServer(0, 1, true, true);
        *known = socket;
    }
    freshState();
    releaseEverything = options.releaseEverything ? 1 : 0;
    startFlag = 0;
    hotkeyinfo_.set({});
    localip.set(AddressText{"10.0.0.1"});
    for (const Box& box : kBoxes) {
        if (box.user) {
            listAsUserBox(box.address);
        }
    }
    for (const char* line : kWall) {
        CreatOutIpMap(line);
    }
    getCurrentInfo(nullptr, "10.0.0.1");
    devices_.keyDevices.count = devices_.mouseDevices.count = 2;
    devices_.touchDevices.count = 1;
    devices_.panel.touchMaxX = devices_.panel.touchMaxY = kPanelRange;
    devices_.keyDevices.fds[0] = kFirstFd;
    devices_.keyDevices.fds[1] = kFirstFd + 1;
    running = this;
    beforeGuard = [this] { comeBetween(); };
    restart();
}

Console::~Console() {
    running = nullptr;
    beforeGuard = nullptr;
    InputSocket = InputViSocket = KvmSetSocket = nullptr;
    releaseEverything = 0;
    setPathPrefix("");
}

void Console::run(const Operations& operations) {
    const tools::Silence silence;
    for (const Operation& operation : operations) {
        if (!goesOn()) {
            return;
        }
        if (operation.isAnotherThreads() && operation.between > 0) {
            between_.push_back(operation);
        } else {
            happenPlainly(operation);
        }
    }
    happen({});
}

void Console::happensNow(const Operation& operation) {
    const tools::Silence silence;
    happen(operation);
}

void Console::order(const std::string& text) {
    const tools::Silence silence;
    commands_.handle(text);
    serve();
}

void Console::answer(const std::string& text) { answers_[kBoxes[0].address] = text; }

void Console::give(unsigned device, InputRecord record) {
    const tools::Silence silence;
    constexpr unsigned kDevices = 5;
    InputDeviceList* const lists[] = {&devices_.keyDevices, &devices_.mouseDevices,
                                      &devices_.touchDevices};
    push(*lists[device % kDevices / 2], device % kDevices % 2, record.type, record.code,
         record.value);
    serve();
}

/// A key or a button that nothing stands in the way of has to arrive.
void Console::happenPlainly(const Operation& operation) {
    const BoxInControl before = boxNow();
    const bool isKey =
        operation.kind == Operation::kKey && kKeys[static_cast<std::size_t>(operation.a)].isPlain();
    const bool plain = (isKey || operation.kind == Operation::kButton) && isForBox() &&
                       !before.isNone() && between_.empty() && operation.between == 0 &&
                       !serving_->hasWork() && state_.keys.modifiers() == 0;
    const std::size_t held = held_.size();
    happen(operation);
    const BoxInControl now = boxNow();
    if (plain && goesOn() && now.serial == before.serial) {
        plainlyServed(placeOf(now, isKey), isKey, held_.size() > held);
    }
}

void Console::happen(const Operation& operation) {
    now_ += 1000;
    act(operation);
    if (!comesBetween_ && operation.between == 0) {
        serve();
    }
}

void Console::act(const Operation& operation) {
    const auto row = static_cast<std::size_t>(operation.a);
    switch (operation.kind) {
        case Operation::kOrder:
            startOrdered_ = startOrdered_ || kOrders[row] == "OSDSTART";
            commands_.handle(kOrders[row]);
            break;
        case Operation::kAnswer:
            answers_[kBoxes[static_cast<std::size_t>(operation.device)].address] = kAnswers[row];
            break;
        case Operation::kQuery:
            TimegetChipVersion();
            break;
        case Operation::kWait:
            now_ += std::int64_t{operation.a} * 1000;
            break;
        case Operation::kRestart:
            restart();
            break;
        case Operation::kRest:
            letGoOfAll();
            break;
        default:
            actAtDevice(operation);
    }
}

void Console::actAtDevice(const Operation& operation) {
    const auto device = static_cast<std::size_t>(operation.device);
    const auto row = static_cast<std::size_t>(operation.a);
    InputDeviceList& mice = devices_.mouseDevices;
    InputDeviceList& panels = devices_.touchDevices;
    if (operation.kind == Operation::kKey) {
        toggle(devices_.keyDevices, device, kKeys[row].code);
    } else if (operation.kind == Operation::kButton) {
        toggle(mice, device, row == 0 ? BTN_LEFT : BTN_RIGHT);
    } else if (operation.kind == Operation::kMove) {
        push(mice, device, EV_REL, REL_X, operation.a);
        push(mice, device, EV_REL, REL_Y, operation.b);
        push(mice, device, EV_SYN, SYN_REPORT, 0);
    } else if (operation.kind == Operation::kWheel) {
        push(mice, device, EV_REL, REL_WHEEL, operation.a);
    } else if (operation.kind == Operation::kContact) {
        toggle(panels, 0, BTN_TOUCH);
        push(panels, 0, EV_SYN, SYN_REPORT, 0);
    } else {
        push(panels, 0, EV_ABS, ABS_X, operation.a);
        push(panels, 0, EV_ABS, ABS_Y, operation.b);
        push(panels, 0, EV_SYN, SYN_REPORT, 0);
    }
}

void Console::push(InputDeviceList& list, std::size_t slot, int type, int code, int value) {
    const TimeOfDay time{now_ / 1'000'000, now_ % 1'000'000};
    list.queues[slot].push(
        {static_cast<std::int32_t>(time.seconds), static_cast<std::int32_t>(time.microseconds),
         static_cast<std::uint16_t>(type), static_cast<std::uint16_t>(code), value},
        time);
    if (&list != &devices_.keyDevices) {
        ups_[&list == &devices_.touchDevices ? 1 : 0][slot].push_back(type == EV_KEY && value == 0);
    }
}

void Console::toggle(InputDeviceList& list, std::size_t slot, int code) {
    const bool down = held_.insert({&list, slot, code}).second;
    if (!down) {
        held_.erase({&list, slot, code});
    }
    push(list, slot, EV_KEY, code, down ? 1 : 0);
}

void Console::letGoOfAll() {
    for (const auto& [list, slot, code] : std::exchange(held_, {})) {
        push(*list, slot, EV_KEY, code, 0);
        push(*list, slot, EV_SYN, SYN_REPORT, 0);
    }
    while (!between_.empty()) {
        between_.front().between = 0;
        comeBetween();
    }
}

void Console::serve() {
    while (serving_->hasWork() && goesOn()) {
        serveOnce();
    }
    served();
}

void Console::serveOnce() {
    const bool wasForBox = isForBox();
    startOrdered_ = false;
    beforePass();
    const bool listens = serving_->pass();
    sink_.printLines();
    for (std::size_t kind = 0; kind < ups_.size(); ++kind) {
        for (auto& waiting : ups_[kind]) {
            if (!waiting.empty()) {
                missed_[kind] = waiting.front() ? !wasForBox || !isForBox() : missed_[kind];
                waiting.pop_front();
            }
        }
    }
    afterPass();
    if (!listens) {
        restart();
    }
}

/// As the supervisor stops the listener and starts a new one.
void Console::restart() {
    letGoOfEverything();
    console_.duties.hotPlugFlag = 1;
    console_.lights.ledKeyFd.set(-1);
    for (InputDeviceList* list :
         {&devices_.keyDevices, &devices_.mouseDevices, &devices_.touchDevices}) {
        for (NodeQueue& queue : list->queues) {
            queue.clear();
        }
    }
    ups_ = {};
    missed_ = {};
    state_.keys.clear();
    serving_.emplace(devices_, state_, sink_);
    GetCurInip(kCellInUse, nullptr);
    if (resyncIsDue(console_, boxInControl())) {
        resync(console_);
    }
    state_.box = boxInControl();
}

void Console::rest(std::int64_t microseconds) {
    comeBetween();
    now_ += microseconds;
}

int Console::untilReadable(int fd, int milliseconds) {
    comeBetween();
    const bool readable = waiting_.count(fd) > 0;
    now_ += readable ? 0 : std::int64_t{milliseconds} * 1000;
    return readable ? 1 : 0;
}

void Console::comeBetween() {
    if (comesBetween_ || between_.empty() || --between_.front().between > 0) {
        return;
    }
    const Operation operation = between_.front();
    between_.pop_front();
    comesBetween_ = true;
    ++cameBetween_;
    happen(operation);
    comesBetween_ = false;
}

void Console::takeDatagram(const Place& to, std::string_view bytes, int fd) {
    comeBetween();
    if (bytes == "link") {
        const auto answer = answers_.find(to.ip);
        if (answer != answers_.end() && !answer->second.empty()) {
            waiting_[fd] = *answer;
        }
        return;
    }
    const auto* const form = std::find_if(kForms.begin(), kForms.end(), [&](const Form& row) {
        return bytes.size() == row.size && bytes.starts_with(row.head);
    });
    if (form == kForms.end() || to.port == kOsdPorts[0] || to.port == kOsdPorts[1]) {
        return;
    }
    ++reports_;
    const auto read = [&](std::size_t offset) {
        return offset == kNone ? std::uint8_t{0} : static_cast<std::uint8_t>(bytes[offset]);
    };
    const Down down{read(form->modifiers), read(form->usage), read(form->buttons)};
    const auto* const box = std::find_if(kBoxes.begin(), kBoxes.end(),
                                         [&](const Box& row) { return to.ip == row.address; });
    const Place place{to.ip, to.port, static_cast<std::size_t>(form - kForms.begin())};
    // A panel's reports are absolute for every box.
    const bool isItsBoxes =
        box != kBoxes.end() &&
        (!down.any() || ((form->user == box->user || place.form == kAbsolute) &&
                         to.port == (form->user ? kUserPort : kBoxPort + box->offset)));
    told_[place] = down;
    reported(place, down, isItsBoxes);
}

std::optional<std::pair<std::string, std::string>> Console::takeAnswer(int fd) {
    const auto answer = waiting_.find(fd);
    if (answer == waiting_.end()) {
        return std::nullopt;
    }
    auto given = std::optional(answer->second);
    waiting_.erase(answer);
    return given;
}

void Console::Sink::toBox(const BoxReport& report) {
    const int before = console_.reports_, cameBetween = console_.cameBetween_;
    ConsoleSink::toBox(report);
    if (console_.cameBetween_ == cameBetween) {
        console_.composed(console_.reports_ - before, console_.boxNow().isNone() ? 0 : 1);
    }
}

std::set<std::size_t> Console::heldKeys() const {
    std::set<std::size_t> rows;
    for (const auto& [list, slot, code] : held_) {
        const auto key = std::find_if(kKeys.begin(), kKeys.end(), [&, held = code](const Key& row) {
            return row.code == held;
        });
        if (key != kKeys.end()) {
            rows.insert(static_cast<std::size_t>(key - kKeys.begin()));
        }
    }
    return rows;
}

std::uint8_t Console::heldButtons() const {
    unsigned buttons = 0;
    for (const auto& [list, slot, code] : held_) {
        buttons |= list == &devices_.keyDevices ? 0U : code == BTN_RIGHT ? 2U : 1U;
    }
    return static_cast<std::uint8_t>(buttons);
}

Down Console::toldAt(const Place& place) const {
    const auto told = told_.find(place);
    return told == told_.end() ? Down{} : told->second;
}

std::optional<Place> Console::downWhereControlLeft() {
    for (const auto& [place, down] : told_) {
        if (down.any() && !isInControl(place)) {
            return place;
        }
    }
    return std::nullopt;
}

BoxInControl Console::boxNow() {
    const bool before = std::exchange(comesBetween_, true);
    const BoxInControl box = boxInControl();
    comesBetween_ = before;
    return box;
}

bool Console::isInControl(const Place& place) {
    const BoxInControl box = boxNow();
    in_addr address{};
    return inet_aton(box.curIp.c_str(), &address) != 0 && place.ip == inet_ntoa(address) &&
           (place.port == box.port() || (place.port == kUserPort && box.is_user_ip));
}

}  // namespace simulated
