#include "control/command_channel.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

#include "base/state.h"
#include "base/waiting.h"
#include "base/work_bound.h"
#include "control/control_port.h"
#include "control/hotkey_table.h"
#include "control/mouse_to.h"
#include "net/dotted_text.h"
#include "net/udp_socket.h"
#include "remote/current_screen.h"
#include "remote/handover.h"
#include "remote/reports.h"
#include "remote/selection.h"
#include "remote/send.h"
#include "remote/wall_map.h"

namespace {

/// A command may save the settings on a slow disk.
constexpr std::chrono::seconds kCommandBound{30};
constexpr std::int64_t kAfterFailureMicroseconds = 1'000'000;

void reportUnknown(const std::string& text) {
    std::printf("recv error osd command:%s\n", text.c_str());
}

/// The text behind the first "&", or false with one line when there is none.
bool takeArgument(const std::string& text, std::string& argument) {
    const std::size_t ampersand = text.find('&');
    if (ampersand == std::string::npos) {
        reportUnknown(text);
        return false;
    }
    argument = text.substr(ampersand + 1);
    return true;
}

}  // namespace

/// By wire::Command.
const std::array<CommandChannel::Handler, wire::kCommands.size()> CommandChannel::kHandlers = {
    &CommandChannel::osdQuit, &CommandChannel::osdStart, &CommandChannel::previewQuit,
    &CommandChannel::kvmQuit, &CommandChannel::relation, &CommandChannel::details,
    &CommandChannel::hotkey,  &CommandChannel::pause,    &CommandChannel::resume,
    &CommandChannel::mouseTo, &CommandChannel::status,
};

void CommandChannel::handle(const std::string& text) {
    if (const wire::CommandRow* row = wire::commandOf(text)) {
        (this->*kHandlers[static_cast<std::size_t>(row->command)])(text);
    } else {
        reportUnknown(text);
    }
}

void CommandChannel::osdQuit(const std::string& /*text*/) {
    std::puts("OSD QUIT");
    clear_flag = 1;
    console_.modes.osdFlag = 0;
}

void CommandChannel::osdStart(const std::string& /*text*/) {
    std::puts("osdSet OSDSTART");
    console_.modes.osdFlag = 1;
    releaseKey();
    letGoOfEverything();  // what is down in another form; its release goes to the OSD
}

void CommandChannel::previewQuit(const std::string& /*text*/) {
    std::puts("preview quit");
    console_.modes.previewMode = 0;
}

void CommandChannel::kvmQuit(const std::string& /*text*/) {
    std::puts("kvm quit");
    console_.modes.kvmMode = 0;
}

void CommandChannel::relation(const std::string& text) {
    std::string map;
    if (text == lastRelation_ || !takeArgument(text, map)) {
        return;
    }
    lastRelation_ = text;
    if (text == wire::kNoControl) {
        std::puts("stop kvm");
        stopControl();
        return;
    }
    osdIpMapSet(map, "out", nullptr);
    currentInfo.with([](currentCtl& now) {
        now.pointerX = 0;
        now.pointerY = 0;
        now.cellX = 0;
        now.cellY = 0;
    });
    startFlag = console_.modes.osdFlag.load();
    getCurrentInfo(nullptr, localip.copy().c_str());
}

void CommandChannel::details(const std::string& text) {
    std::string map;
    if (!takeArgument(text, map)) {
        return;
    }
    if (text.size() > wire::kSingleEntryLength) {
        currentInfo.with([](currentCtl& now) {
            now.pointerX = 0;
            now.pointerY = 0;
        });
    }
    getTouchIp(console_.touchInputIp, text);
    console_.duties.hotPlugFlag = 1;
    osdIpMapSet(map, "in", nullptr);
    if (startFlag) {
        selectAfterRelation();
    } else {
        reselectScreen(map);
    }
}

/// The screen that this console shows got new cells, unless they are meant for another output box.
void CommandChannel::reselectScreen(const std::string& map) {
    const AddressText given = getOsdOutIp(map);
    std::printf("curOutIp:%s,osdGetIp:%s\n", boxInControl().curOutIp.c_str(), given.c_str());
    const auto [screen, place] = currentInfo.with([](const currentCtl& now) {
        return std::pair(now.screen.name, gridKey(now.outX, now.outY));
    });
    if (!console_.modes.osdFlag && !given.view().starts_with(screen.view())) {
        return;
    }
    getCurrentInfo_(&place, true);
    GetCurInip(kCellInUse, nullptr);
    const BoxInControl box = boxInControl();
    std::printf("kvmset outIp:%s detail get curIp=%s\n", box.curOutIp.c_str(), box.curIp.c_str());
    console_.duties.hotPlugFlag = 1;
    std::printf("get current ip-->%s\n", box.curIp.c_str());
    tellPointer(console_.motion);
}

/// The first cells after a wall that arrived while the OSD was open.
void CommandChannel::selectAfterRelation() {
    getCurrentInfo(nullptr, localip.copy().c_str());
    forgetName();
    GetCurInip(kCellInUse, nullptr);
    console_.duties.hotPlugFlag = 1;
    const BoxInControl box = boxInControl();
    std::printf("kvmset get curName=%s curIp=%s\n", box.curName.c_str(), box.curIp.c_str());
    tellPointer(console_.motion);
    startFlag = 0;
}

void CommandChannel::hotkey(const std::string& text) {
    std::string list;
    if (takeArgument(text, list)) {
        createHotKey(list, true);
    }
}

void CommandChannel::pause(const std::string& /*text*/) {
    std::puts("---osd pause---");
    console_.modes.touchPaused = 1;
    sendRelease(console_.motion);
    if (releaseEverything) {
        letGoOfEverything();  // what comes up meanwhile is not told
    }
}

void CommandChannel::resume(const std::string& /*text*/) { console_.modes.touchPaused = 0; }

void CommandChannel::mouseTo(const std::string& text) {
    parseMouseTo(text, mouseX_, mouseY_);
    if (MouseTo(console_, mouseX_, mouseY_) == 0) {
        std::puts("mouse to error");
    }
}

void CommandChannel::status(const std::string& text) {
    if (text.find(wire::kStatusSubject) == std::string::npos) {
        return;
    }
    const AddressText local = localip.copy();
    const wire::Status answer =
        wire::status(local.view(), counts_.mice, counts_.keyboards, counts_.panels);
    std::array<char, AddressText::kSize> asked{};
    std::array<char, AddressText::kSize> address{};
    int port = 0;
    UDPSocket* socket = KvmSetSocket;
    if (get_seq_ip(text, asked.data(), address.data(), &port) == 0 ||
        local.view() != asked.data() || socket == nullptr) {
        return;
    }
    if (port == 0) {
        socket->EchoTo(answer.data(), static_cast<long>(answer.size()));
    } else if (port > 0 && port <= kMaxPort) {
        sendToOsd(AddressText{address.data()}, port, bytesOf({answer.data(), answer.size()}));
    } else {
        std::printf("no port in status query:%s\n", text.c_str());
    }
}

AddressText getOsdOutIp(const std::string& src) {
    std::printf("get osd outIp:%s\n", src.c_str());
    return AddressText{std::string_view(src).substr(0, src.find('#'))};
}

int getTouchIp(Guarded<AddressText>& touchInputIp, const std::string& text) {
    constexpr std::string_view kFirstCell = "0,0,";
    const std::string_view map = std::string_view(text).substr(text.find('&') + 1);
    const std::size_t hash = map.find('#');
    const AddressText field{map.substr(0, hash)};
    if (!localip.copy().view().starts_with(field.view())) {
        std::puts("not touch local ip");
        return 0;
    }
    const std::string_view cells =
        hash == std::string_view::npos ? std::string_view{} : map.substr(hash + 1);
    if (!cells.starts_with(kFirstCell)) {
        std::puts("not get 0,0 input ip");
        return 0;
    }
    if (text.size() > wire::kSingleEntryLength) {
        std::puts("not signal ");
        touchInputIp.set(AddressText{AddressText::kNone});
        return 0;
    }
    const std::string_view rest = cells.substr(kFirstCell.size());
    const AddressText touch{rest.substr(0, rest.find('#'))};
    touchInputIp.set(touch);
    std::printf("get main touchIp=%s\n", touch.c_str());
    return 1;
}

void* kvmSet(void* slices) {
    const auto& [console, counts, allowed, joinsGroup] = *static_cast<const CommandSlices*>(slices);
    CommandChannel channel(console, counts);
    std::array<char, wire::kLargestCommand> buffer{};
    UDPSocket* socket = KvmSetSocket;
    ControlPort port(*socket, joinsGroup);
    WorkBound bound(kCommandBound);
    for (;;) {
        if (!port.awaitCommand()) {
            continue;
        }
        const long got = socket->RecvFrom(buffer.data(), static_cast<long>(buffer.size()));
        if (got == 0) {
            continue;
        }
        if (got < 0) {
            std::puts("control socket cannot receive");
            sleepMicroseconds(kAfterFailureMicroseconds);
            continue;
        }
        const in_addr from = socket->GetClientSockaddr().sin_addr;
        const AddressText sender = dottedText(from);
        if (!allowed.allows(from)) {
            if (const auto line = allowed.refuse(sender.view(), AllowedSenders::Clock::now())) {
                std::puts(line->c_str());
            }
            continue;
        }
        std::string text(buffer.data(), static_cast<std::size_t>(got));
        text.resize(std::min(text.size(), text.find('\0')));
        std::printf("%s get data-->%s\n", sender.c_str(), text.c_str());
        bound.begin();
        channel.handle(text);
        bound.end();
    }
}
