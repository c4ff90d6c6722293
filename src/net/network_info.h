#pragma once

/// What the kernel knows about one network interface.
class NetworkInfo {
 public:
    /// What to deliver; the values are the kernel's own interface requests (linux/sockios.h), save
    /// kEverything, which is the number after SIOCGIFNETMASK.
    enum IF_CONFIG : unsigned {
        kAddress = 0x8915,     ///< SIOCGIFADDR
        kBroadcast = 0x8919,   ///< SIOCGIFBRDADDR
        kNetmask = 0x891B,     ///< SIOCGIFNETMASK
        kEverything = 0x891C,  ///< "mac:...@ip:...@mask:...@braod:..."
        kHardware = 0x8927,    ///< SIOCGIFHWADDR
    };

    static constexpr unsigned kTextSize = 32;         ///< holds any single text with its NUL
    static constexpr unsigned kEverythingSize = 160;  ///< holds the combined text with its NUL

    /// Writes the selected text of the interface `name` into `out`, which has room for kTextSize
    /// characters (kEverythingSize for kEverything). Returns 1, also with an empty text when none
    /// of the first 16 interfaces that have an IPv4 address carries the name; 0 when a request
    /// failed (printed), for a selector of another value and for a null argument, `out` then
    /// unchanged. Any thread.
    static int GetNetworkInfo(const char* name, IF_CONFIG selector, char* out);
};
