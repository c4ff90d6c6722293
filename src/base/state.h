#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "base/address_text.h"
#include "base/guarded.h"
#include "base/shared.h"
#include "base/wall_records.h"

/// The run-time state that the whole process shares. main fills it before the threads of
/// start-up exist; afterwards it changes in place and is never reset as a whole.
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
/// | releaseEverything | flag        | 0                  | M       | M C I   |
/// | hideKeys      | flag            | 0                  | M       | I       |
/// | startFlag     | flag            | 1                  | M C     | C       |
/// | clear_flag    | flag            | 0                  | C       | -       |
/// | vr_mouse      | flag            | 0                  | -       | -       |
/// | localip       | address         | ""                 | M       | M C     |
/// | user_ip       | list            | none               | M       | C I     |
/// | user_n        | s32             | 0                  | M       | C I     |
/// | InputSocket   | socket          | null               | M       | M C V I |
/// | KvmSetSocket  | socket          | null               | M       | C I     |
/// | InputViSocket | socket          | null               | V       | V       |
/// | vi_info       | 256 records     | zero               | M C V I | C V I   |
/// | currentInfo   | current screen  | empty              | M C V I | M C V I |
/// | outInfo_      | wall            | empty              | M C     | M C I   |
///
/// The box in control is one value of its own (remote/box_in_control.h); modes and lights are
/// slices (remote/console_state.h).

class UDPSocket;

using Flag = Shared<std::uint8_t>;

inline Flag qtFlag{1};             ///< 1: an OSD process runs on this console, 0: none does
inline Flag shift_3_flag{0};       ///< three taps of Shift open the KVM mode
inline Flag ctrl_3_flag{1};        ///< three taps of Ctrl open the OSD
inline Flag alt_3_flag{0};         ///< three taps of Alt open the preview
inline Flag releaseEverything{0};  ///< --release-everything
inline Flag hideKeys{0};           ///< --hide-keys
inline Flag startFlag{1};          ///< the wall map awaits its first selection
inline Flag clear_flag{0};         ///< the OSD was closed by command
inline Flag vr_mouse{0};           ///< the pointer is mirrored to the output box; nothing sets it

inline Guarded<AddressText> localip;  ///< this board's own address

/// The addresses of ./ip.txt. Written once, before the threads of start-up exist; read-only
/// afterwards.
inline std::vector<AddressText> user_ip;
inline Shared<std::int32_t> user_n{0};

inline Shared<UDPSocket*> InputSocket{nullptr};    ///< local port 19357
inline Shared<UDPSocket*> KvmSetSocket{nullptr};   ///< local port 41236, group 224.168.1.1
inline Shared<UDPSocket*> InputViSocket{nullptr};  ///< local port 19358, periodic queries only

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
inline constexpr std::string_view kvmS = "KVMSTART";
