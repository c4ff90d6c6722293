#include "app/startup.h"

#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "app/board.h"
#include "app/user_list.h"
#include "base/path_prefix.h"
#include "base/shell.h"
#include "base/singleton.h"
#include "base/state.h"
#include "base/text.h"
#include "base/thread.h"
#include "config/software_config.h"
#include "control/command_channel.h"
#include "control/control_port.h"
#include "control/loading.h"
#include "net/local_ip.h"
#include "net/udp_socket.h"
#include "remote/current_screen.h"
#include "remote/handover.h"
#include "remote/source_query.h"
#include "remote/wall_notes.h"
#include "remote/wire.h"
#include "remote/wire_text.h"

namespace {

constexpr int kJoinAttempts = 10;
constexpr int kPriority = 0;
constexpr int kPolicy = 1;  // SCHED_FIFO
constexpr int kJoinable = 0;

void identifyBoard() {
    std::array<char, kBoardNameSize> identifier{};
    vi_info.set({});
    readHdVersion(identifier.data());
    std::printf("version:%s\n", identifier.data());
    RealBoardAccess access;
    bringUpBoard(identifier.data(), access);
}

bool exists(const char* path) { return access(prefixedPath(path).c_str(), F_OK) == 0; }

void chooseDisplayMode() {
    if (!exists("./lib") && !exists("/home/QT_LIB/lib")) {
        qtFlag = 0;
        shift_3_flag = 1;
        ctrl_3_flag = 1;
        alt_3_flag = 1;
        std::puts("this kvm use dma");
        return;
    }
    std::puts("this kvm use osd");
    qtFlag = 1;
    ctrl_3_flag = 1;
}

void learnLocalAddress() {
    const std::string text = GetLocalIp();
    const AddressText address{text};
    if (!AddressText::fits(text)) {
        std::printf("local address over 19 characters, cut to %s\n", address.c_str());
    }
    localip.set(address);
    std::printf("locak Ip=%s\n", text.c_str());
}

void openInputSocket() {
    auto* socket = new UDPSocket;  // lives as long as the process
    socket->CreateUDPServer(wire::kReportSourcePort, 1, true, true);
    InputSocket = socket;
}

void resetAddresses() {
    stopControl();
    setOutIp(localip.copy());
}

/// Tells what became of the map lines, and keeps the file when a save would lose some of them.
void tellWall(SoftwareConfig& config, const LoadedWall& loaded) {
    const WallNotes notes = describe(loaded, localip.copy().view());
    for (const std::string& line : notes.lines) {
        std::puts(line.c_str());
    }
    printUnlessEmpty(config.keepFile(notes.lost));
}

void loadWall(SoftwareConfig& config) {
    const LoadedWall loaded = makeWall(config);
    if (loaded.isUsed) {
        getCurrentInfo(nullptr, localip.copy().c_str());
    }
    tellWall(config, loaded);
}

}  // namespace

void openControlSocket(bool joinsGroup) {
    auto* socket = new UDPSocket;  // lives as long as the process
    socket->CreateUDPServer(wire::kCommandPort, 0, false, true);
    socket->SetMulticastTTL(kMulticastTtl);
    KvmSetSocket = socket;
    for (int attempt = 0; joinsGroup && attempt < kJoinAttempts; ++attempt) {
        if (socket->AddMemberShip(wire::kControlGroup, kControlInterface) != 0) {
            std::puts("add mlt:224.168.1.1");
            return;
        }
    }
}

namespace {

void startThreads(CommandSlices& commands) {
    if (const pthread_t thread = CreateThread(kvmSet, kPriority, kPolicy, kJoinable, &commands)) {
        std::printf("thread tid-->%lu\n", static_cast<unsigned long>(thread));
    } else {
        std::puts("thread create error");
    }
    if (CreateThread(viThr, kPriority, kPolicy, kJoinable, nullptr) != 0) {
        std::puts("vi width and heigth thread create success");
    } else {
        std::fputs("vi width and heigth thread create error", stdout);
        std::fflush(stdout);  // no line end follows
    }
}

}  // namespace

void startUp(inputevent_& events) {
    std::printf("===this tavrik version:%s===\n", kVersion);
    identifyBoard();
    chooseDisplayMode();
    loadUserList();
    runShell("ifconfig lo 127.0.0.1");
    learnLocalAddress();
    const auto config = Singleton<SoftwareConfig>::instance();
    loadSettings(*config);
    openInputSocket();
    resetAddresses();
    loadWall(*config);
    loadHotkeys(*config);
    openControlSocket(events.forCommands.joinsGroup);
    startThreads(events.forCommands);
}
