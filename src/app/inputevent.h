#pragma once

#include <cstdint>

#include "base/event_node.h"
#include "control/command_channel.h"
#include "control/device_counts.h"
#include "input/devices.h"
#include "input/input_thread.h"
#include "remote/console_state.h"
#include "remote/uncalled.h"

/// The console's one input-event object. It owns the slices of state that the rooms work on; each
/// thread gets those that it needs by argument. Its operations are doors, one line each, to the
/// rooms' own functions, which say what they do: nothing in the program walks through them.
class inputevent_ {
 public:
    inputevent_() = default;
    inputevent_(const inputevent_&) = delete;
    inputevent_& operator=(const inputevent_&) = delete;

    DeviceCounts counts;
    AllowedSenders allowedSenders;
    ConsoleState console;
    Devices devices{counts};

    InputSlices forInput{devices, console};
    CommandSlices forCommands{console, counts, allowedSenders};

    // input/: devices and listener, input thread
    int openInputFd();
    int closeInputFd(bool mouse, bool key, bool touch);
    int check_input_event();
    unsigned listenInputFd();

    // input/: key translation, input thread
    int OnKeyDown(int code, char* report, char, char, char, char* name);
    int OnKeyUp(int code, char* report, char);
    int GetChar(char* report, char* text);

    // remote/: reports, any thread
    int getInputMouseLocation(char* buf);
    int operationEvent(EventType type, char* ip, void* ev, char* buf);
    int user_send_mk(EventType type, char* mouse, char* key);
    int releaseKey();
    int releaseInput(char* ip);
    int sendRelease();
    int syncLed(bool send);
    int MouseTo(int x, int y);

    // remote/: selection and queries, any thread
    int GetCurInip(unsigned inKey, char* ipOut);
    int getCurrentInfo_(unsigned* outKey, bool flag);
    void getChipVersion();
    void TimegetChipVersion();

    // remote/: edge crossing, input thread
    unsigned slideScreenLeft();
    unsigned slideScreenRight();
    unsigned slideScreenUp();
    unsigned slideScreenDown();
};
