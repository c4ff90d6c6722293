#include "remote/wire.h"

#include "unit/fixture.h"

namespace {

TEST(Wire, FormatsHaveTheseBytes) {
    EXPECT_EQ(hex(wire::absolute(0x05, 0x0123, 0x0438, 0xFF)), "57 ab 04 01 05 23 01 38 04 ff");
    EXPECT_EQ(hex(wire::relative(0x02, -3, 7, 0x01)), "57 ab 02 02 fd 07 01");
    EXPECT_EQ(hex(wire::keyboard(0x22, 0x1D)), "57 ab 01 22 00 1d 00 00 00 00 00");
    EXPECT_EQ(hex(wire::userPointer(0x01, 100, 50, 0xFE)), "4b 00 02 07 01 e8 03 84 03 fe fe");
    EXPECT_EQ(hex(wire::userKeyboard(0x08, 0x2C)), "4b 00 01 08 08 00 2c 00 00 00 00 00");
    EXPECT_EQ(hex(wire::kKeyRelease), "57 ab 01 00 00 00 00 00 00 00 00");
    EXPECT_EQ(hex(wire::kCtrlHeld), "57 ab 01 01 00 00 00 00 00 00 00");
    EXPECT_EQ(hex(wire::kPointerRelease), "57 ab 04 01 00 ff 03 00 00 00");
    EXPECT_EQ(wire::lights(false, true), "out&capslock=off#numlock=on");
    EXPECT_EQ(wire::lights(true, false), "out&capslock=on#numlock=off");
}

TEST(Wire, NumbersKeepTheirLowBits) {
    EXPECT_EQ(hex(wire::absolute(0, -1, 0x12345, 0)), "57 ab 04 01 00 ff ff 45 23 00");
    EXPECT_EQ(hex(wire::relative(0, 300, -129, 0)), "57 ab 02 00 2c 7f 00");
    // 6553 * 10 and 3640 * 18 are the last that fit in 16 bits.
    EXPECT_EQ(hex(wire::userPointer(0, 6553, 3640, 0)), "4b 00 02 07 00 fa ff f0 ff 00 00");
    EXPECT_EQ(hex(wire::userPointer(0, 6554, 3641, 0)), "4b 00 02 07 00 04 00 02 00 00 00");
    EXPECT_EQ(hex(wire::userPointer(0, 2147483647, -2147483647 - 1, 0)),
              "4b 00 02 07 00 f6 ff 00 00 00 00");
}

}  // namespace
