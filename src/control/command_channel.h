#pragma once

#include <array>
#include <string>

#include "base/address_text.h"
#include "base/guarded.h"
#include "control/allowed_senders.h"
#include "control/device_counts.h"
#include "remote/console_state.h"
#include "remote/wire_text.h"

/// The orders of the OSD process and of the management side: one text command a datagram.

/// What the command thread works on; it outlives the thread.
struct CommandSlices {
    ConsoleState& console;
    const DeviceCounts& counts;
    AllowedSenders& allowed;
    bool joinsGroup = true;  ///< the whole site's orders count, which come to the multicast group
};

/// Thread body, on CommandSlices: receives on KvmSetSocket and carries out. Never returns.
void* kvmSet(void* slices);

/// What the channel remembers between commands.
class CommandChannel {
 public:
    CommandChannel(ConsoleState& console, const DeviceCounts& counts)
        : console_(console), counts_(counts) {}

    /// Carries out one command. An unknown or malformed one gets one line and changes nothing.
    void handle(const std::string& text);

 private:
    using Handler = void (CommandChannel::*)(const std::string&);
    static const std::array<Handler, wire::kCommands.size()> kHandlers;

    void osdQuit(const std::string& text);
    void osdStart(const std::string& text);
    void previewQuit(const std::string& text);
    void kvmQuit(const std::string& text);
    void relation(const std::string& text);
    void details(const std::string& text);
    void hotkey(const std::string& text);
    void pause(const std::string& text);
    void resume(const std::string& text);
    void mouseTo(const std::string& text);
    void status(const std::string& text);

    void reselectScreen(const std::string& map);
    void selectAfterRelation();

    ConsoleState& console_;
    const DeviceCounts& counts_;
    std::string lastRelation_;
    int mouseX_ = 0;
    int mouseY_ = 0;
};

/// The characters of `src` before its first "#", as far as an address holds them; prints `src`.
AddressText getOsdOutIp(const std::string& src);

/// Takes the touch input address from a whole "details" text. Returns 1 when it found one, else 0.
int getTouchIp(Guarded<AddressText>& touchInputIp, const std::string& text);
