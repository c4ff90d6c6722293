#pragma once

#include <cstdint>
#include <string>

#include "base/inputevent.h"
#include "base/wall_records.h"

/// The orders of the OSD process and of the management side: one text command a datagram.

/// Thread body: receives on KvmSetSocket and carries out. Never returns.
void* kvmSet(void* unused);

/// What the channel remembers between commands.
class CommandChannel {
 public:
    explicit CommandChannel(inputevent_& events) : events_(events) {}

    /// Carries out one command. An unknown or malformed one gets one line and changes nothing.
    void handle(const std::string& text);

 private:
    using Handler = void (CommandChannel::*)(const std::string&);
    enum class Match : std::uint8_t { kWhole, kPrefix };
    struct Command {
        const char* text;
        Match match;
        Handler handler;
    };
    static const Command kCommands[];

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
    void sendPointer();

    inputevent_& events_;
    std::string lastRelation_;
    unsigned screenKey_ = 0;
    int mouseX_ = 0;
    int mouseY_ = 0;
    inputevent_::PointerReport pointer_{};
};

/// The characters of `src` before its first "#", as far as an address holds them; prints `src`.
AddressText getOsdOutIp(const std::string& src);

/// Takes the touch input address from a whole "details" text. Returns 1 when it found one, else 0.
int getTouchIp(inputevent_& events, const std::string& text);

/// Reads "MTO:%d,%d"; numbers that do not parse leave `x` and `y` as they are. Pure.
void parseMouseTo(const std::string& text, int& x, int& y);
