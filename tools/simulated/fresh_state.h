#pragma once

#include "base/state.h"
#include "remote/handover.h"

/// Puts what the process shares back to where it was before start-up, but for the sockets and the
/// hotkeys: nobody has control, there is no wall, and no box is known. The boxes' port is 80.
inline void freshState() {
    handOver([](const BoxInControl&) { return std::optional(BoxInControl{}); }, LetGo::kAlways);
    setInputPort(kDefaultInputPort);
    clear_flag = vr_mouse = 0;
    qtFlag = startFlag = 1;
    localip.set({});
    user_ip.clear();
    user_n = 0;
    vi_info.set({});
    currentInfo.set({});
    outInfo_.set({});
}

/// Adds to the user address list.
inline void listAsUserBox(std::string_view ip) {
    user_ip.emplace_back(ip);
    user_n = static_cast<std::int32_t>(user_ip.size());
}
