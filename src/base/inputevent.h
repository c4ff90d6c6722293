#pragma once

#include <sys/select.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "base/address_text.h"
#include "base/event_node.h"
#include "base/guarded.h"
#include "base/shared.h"
#include "base/state.h"

/// The console's one input-event object. It is declared here so that every folder may use it; its
/// members are defined by the folder whose work they are (named at each group).

/// The kind of a forwarded event.
enum EventType : int {
    kMouseMove = 0,    ///< the pointer moved: refresh the position and send
    kMouseClick = 1,   ///< a button changed: send at once
    kMouseWheel = 2,   ///< prepare the wheel byte and the position, do not send
    kMouseButton = 3,  ///< update the button bits, do not send
    kMouseFlush = 4,   ///< send the pointer buffer as it stands
    kKeyboard = 5,     ///< a keyboard report (user-list boxes)
};

/// Devices of one kind. The count may be read from any thread; the rest belongs to the input thread
/// while it runs and to the supervisor while it does not.
struct InputDeviceList {
    static constexpr std::size_t kSlots = 8;
    static constexpr std::size_t kNameSize = 16;

    Shared<std::uint32_t> count{0};
    std::array<std::array<char, kNameSize>, kSlots> names{};  ///< node names such as event3
    std::array<std::int32_t, 16> fds{};  ///< 0 when closed, -1 when the node did not open
    std::array<RecordLayout, 16> layouts{};

    EventNode node(std::size_t slot) const { return {fds[slot], layouts[slot]}; }
    const char* name(std::size_t slot) const { return names[slot].data(); }
};

class inputevent_ {
 public:
    using KeyReport = std::array<std::uint8_t, 11>;
    using PointerReport = std::array<std::uint8_t, 10>;
    using RelativeReport = std::array<std::uint8_t, 7>;

    inputevent_();

    // input/: devices. Input thread only, except closeInputFd, which the supervisor calls too while
    // no input thread runs.
    int openInputFd();
    int closeInputFd(bool mouse, bool key, bool touch);
    int check_input_event();
    unsigned listenInputFd();

    // input/: key translation. Input thread only.
    int OnKeyDown(int code, std::uint8_t* report, char, char, char, char* name);
    int OnKeyUp(int code, std::uint8_t* report, char);
    int GetChar(const std::uint8_t* report, char* text);

    // remote/: reports. Input, control and screen-information threads, and the supervisor while no
    // input thread runs.
    int getInputMouseLocation(std::uint8_t* buf);
    int operationEvent(EventType type, const char* ip, const InputRecord* ev, std::uint8_t* buf);
    int user_send_mk(EventType type, const std::uint8_t* mouse, const std::uint8_t* key);
    int releaseKey();
    int releaseInput(const char* ip);
    int sendRelease();
    int syncLed(bool send);
    int MouseTo(int x, int y);

    // remote/: selection and queries. Input, control and (TimegetChipVersion) screen-information
    // threads.
    int GetCurInip(unsigned inKey, AddressText& ipOut);
    int getCurrentInfo_(const unsigned* outKey, bool flag);
    void getChipVersion();
    void TimegetChipVersion();

    // remote/: edge crossing. Input thread only.
    unsigned slideScreenLeft();
    unsigned slideScreenRight();
    unsigned slideScreenUp();
    unsigned slideScreenDown();

    InputDeviceList keyDevices;
    InputDeviceList mouseDevices;
    InputDeviceList touchDevices;

    Shared<std::int32_t> touchType{0};
    Shared<std::int32_t> touchMaxX{0};
    Shared<std::int32_t> touchMaxY{0};
    Flag touchNamed{0};  ///< the panel's range is known by its name
    Flag ilitekTouch{0};
    Flag touchFwV06{0};

    std::array<char, 32> actKeyEvent{};  ///< supervisor only
    Flag hotPlugFlag{
        1};  ///< the listener has to bring the box's lights and picture size up to date
    Flag listenerAlive{0};  ///< 1 while the listener runs, 0 once it failed
    fd_set readSet{};       ///< input thread, or the supervisor while none runs

    /// The keyboard whose lights are kept in step; -1 and 0: none known. The guard is held while
    /// the lights are read, so that the descriptor cannot be closed and reused meanwhile.
    Guarded<std::int32_t> ledKeyFd{-1};
    Flag capsLockOn{0};
    Flag numLockOn{0};

    /// Everything released; what releaseKey, releaseInput, sendRelease and GetCurInip send.
    const KeyReport keyReleaseReport;
    Guarded<RelativeReport> relativeReport;

    Shared<std::int32_t> remoteDx{0};  ///< motion not yet sent in a relative report
    Shared<std::int32_t> localDx{0};   ///< motion not yet sent to the OSD
    Shared<std::int32_t> remoteDy{0};
    Shared<std::int32_t> localDy{0};

    Shared<std::int32_t> keysHeld{0};  ///< keys down at the current box; never below 0
    Flag buttonsHeld{0};               ///< a mouse button is down at the current box
    Flag previewMode{0};
    Flag kvmMode{0};
    Flag touchPaused{0};
    Flag touchLongPressDisabled{0};
    Flag queryInProgress{0};
    Guarded<AddressText> touchInputIp;
};
