#include "config/config_lines.h"

#include "unit/fixture.h"

namespace {

const std::string kFixed =
    "kUdpServerPort=81\nkActKeyEvent=a\nkHotkeymap=h\nkHotCmd0=c0\nkHotCmd1=c1\nkHotCmd2=c2\n";

TEST(SettingNumber, IsHeldWithin32Bits) {
    const std::pair<const char*, std::int32_t> rows[] = {{"", 0},
                                                         {"x", 0},
                                                         {"12x", 12},
                                                         {"-7", -7},
                                                         {"4294967297", 2147483647},
                                                         {"-99999999999999999999", -2147483648}};
    for (const auto& [text, number] : rows) {
        EXPECT_EQ(settingNumber(text), number) << text;
    }
}

TEST(SettingsIn, FollowsTheFirstLineThatContainsTheKey) {
    const std::pair<std::string, std::vector<std::string_view>> rows[] = {
        {"", {}},
        {"kUdpServerPort=19400", {"19400"}},
        {"*kUdpServerPort=1\n!kUdpServerPort=2\n;kUdpServerPort=3\n", {}},
        {" kUdpServerPort=5\n;kActKeyEvent=1\n", {"5"}},
        {"kUdpServerPort=1\nkUdpServerPort=2\n", {"1"}},
        {"kUdpServerPort=kUdpServerPort=2", {"kUdpServerPort=2"}},
        {"kUdpServerPort=1 kActKeyEvent=2", {"1 kActKeyEvent=2", "2"}},
        {"xkUdpServerPort=9\nkUdpServerPort=1\n", {"9"}},
        {"kUdpServerPort=1\r\n\r\nkActKeyEvent=\r2\r\r\nkHotkeymap=3\r", {"1", "\r2\r", "3"}},
        {"kUdpServerPort=\nkActKeyEvent=", {"", ""}},
        {"kUdpServerPort\n=\n==\n", {}},
        {"kActKeyEvent=1\nkOutNum=3\n", {}},
        // A map number counts only as it is written.
        {kFixed + "kOutNum=2\nkOutIpmap00=a\nkOutIpmap=b\nkOutIpmap10000=c\n"
                  "kOutIpmap4089=d\nxkOutIpmap0=e\nkOutIpmap01=f\nkOutIpmap1=g\n",
         {"81", "a", "h", "c0", "c1", "c2", "2", "e", "g"}}};
    for (const auto& [text, values] : rows) {
        EXPECT_EQ(settingsIn(text), values) << text;
    }
}

}  // namespace
