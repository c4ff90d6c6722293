#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <string_view>
#include <vector>

#include "base/address_text.h"
#include "base/guarded.h"
#include "base/shared.h"
#include "base/wall_records.h"

/// The run-time state that the whole process shares. main fills it before any other thread exists;
/// afterwards it changes in place and is never reset as a whole.
///
/// Threads: M main (start-up, then supervision), C control channel, V screen information, I input.
/// Shared<T> is a plain word to the hardware; Guarded<T> is copied in and out whole.
///
/// | name          | type            | initial            | writers | readers |
/// |---------------|-----------------|--------------------|---------|---------|
/// | qtFlag        | flag            | 1                  | M       | I       |
/// | shift_3_flag  | flag            | 0                  | M       | I       |
/// | ctrl_3_flag   | flag            | 1                  | M       | I       |
/// | alt_3_flag    | flag            | 0                  | M       | I       |
/// | startFlag     | flag            | 1                  | M C     | C       |
/// | osdFlag       | flag            | 0                  | C I     | C I     |
/// | clear_flag    | flag            | 0                  | C       | C       |
/// | rel_enable    | flag            | 0                  | C V I   | M C V I |
/// | is_user_ip    | flag            | 0                  | C I     | M C V I |
/// | vr_mouse      | flag            | 0                  | -       | C V I   |
/// | curIp         | address         | "" -> "0.0.0.0"    | M C I   | M C V I |
/// | curName       | address         | "" -> "0.0.0.0"    | M C I   | C       |
/// | curOutIp      | address         | "" -> local        | M C I   | C V I   |
/// | localip       | address         | ""                 | M       | M C     |
/// | inputPort     | s32             | 0                  | M C     | M C V I |
/// | port_add      | s32             | 0                  | C I     | M C V I |
/// | user_ip       | list            | none               | M       | C I     |
/// | user_n        | s32             | 0                  | M       | C I     |
/// | InputSocket   | socket          | null               | M       | M C V I |
/// | KvmSetSocket  | socket          | null               | M       | C I     |
/// | InputViSocket | socket          | null               | V       | V       |
/// | XRIGHT        | s32, pixels     | 1920               | C V I   | C V I   |
/// | YDOWN         | s32, pixels     | 1080               | C V I   | C V I   |
/// | vi_info       | 256 records     | zero               | M C V I | C V I   |
/// | currentInfo   | current screen  | empty              | M C V I | M C V I |
/// | outInfo_      | wall            | empty              | M C     | M C I   |
///
/// The facts about the box now controlled (curIp, curName, port_add, is_user_ip, rel_enable,
/// XRIGHT, YDOWN) belong together: whoever selects a box stores them all under boxGuard, whoever
/// sends takes one copy of them under it. It is held for these stores and loads and nothing else.

class UDPSocket;

inline constexpr std::int32_t kMaxPort = 65535;
inline constexpr std::int32_t kDefaultInputPort = 80;
inline constexpr std::int32_t kDefaultWidth = 1920;
inline constexpr std::int32_t kDefaultHeight = 1080;

using Flag = Shared<std::uint8_t>;

inline Flag qtFlag{1};        ///< 1: an OSD process runs on this console, 0: none does
inline Flag shift_3_flag{0};  ///< three taps of Shift open the KVM mode
inline Flag ctrl_3_flag{1};   ///< three taps of Ctrl open the OSD
inline Flag alt_3_flag{0};    ///< three taps of Alt open the preview
inline Flag startFlag{1};     ///< the wall map awaits its first selection
inline Flag osdFlag{0};       ///< the OSD is open
inline Flag clear_flag{0};    ///< the OSD was closed by command
inline Flag rel_enable{0};    ///< the current box takes relative pointer reports
inline Flag is_user_ip{0};    ///< the current box is one of the user address list
inline Flag vr_mouse{0};      ///< the pointer is mirrored to the output box; nothing sets it

inline std::mutex boxGuard;

inline Guarded<AddressText> curIp;     ///< the input box now controlled
inline Guarded<AddressText> curName;   ///< its name in the map
inline Guarded<AddressText> curOutIp;  ///< the output box in use
inline Guarded<AddressText> localip;   ///< this board's own address

inline Shared<std::int32_t> inputPort{0};  ///< UDP port of the input boxes, 0 to 65535
inline Shared<std::int32_t> port_add{0};   ///< offset of the current box's ports

/// The addresses of ./ip.txt. Written once, before any other thread exists; read-only afterwards.
inline std::vector<AddressText> user_ip;
inline Shared<std::int32_t> user_n{0};

inline Shared<UDPSocket*> InputSocket{nullptr};    ///< local port 19357
inline Shared<UDPSocket*> KvmSetSocket{nullptr};   ///< local port 41236, group 224.168.1.1
inline Shared<UDPSocket*> InputViSocket{nullptr};  ///< local port 19358, periodic queries only

inline Shared<std::int32_t> XRIGHT{kDefaultWidth};  ///< width of the current box's picture
inline Shared<std::int32_t> YDOWN{kDefaultHeight};  ///< and its height

/// What one input box told about its picture.
struct ViInfo {
    std::uint8_t relative = 0;  ///< 1: takes relative pointer reports
    AddressText address;        ///< the record is used only when this is the box's address
    std::int32_t width = 0;
    std::int32_t height = 0;
};

/// Indexed by the last octet of the box's address; record 0 is never used for look-up.
inline Guarded<std::array<ViInfo, 256>> vi_info;

inline Guarded<currentCtl> currentInfo;
inline Guarded<outInf> outInfo_;

inline constexpr std::string_view osdS = "OSDSTART";
inline constexpr std::string_view osdQ = "OSDQUIT";
inline constexpr std::string_view previewS = "PREVIEWSTART";
inline constexpr std::string_view previewQ = "PREVIEWQUIT";
