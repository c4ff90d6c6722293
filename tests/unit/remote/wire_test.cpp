#include "remote/wire.h"

#include "unit/fixture.h"

namespace {

TEST(Wire, FormatsHaveTheseBytesAndNumbersKeepTheirLowBits) {
    EXPECT_EQ(hex(wire::absolute(0x05, -1, 0x12345, 0xFF)), "57 ab 04 01 05 ff ff 45 23 ff");
    EXPECT_EQ(hex(wire::relative(0x02, 300, -129, 0x01)), "57 ab 02 02 2c 7f 01");
    EXPECT_EQ(hex(wire::keyboard(0x22, 0x1D)), "57 ab 01 22 00 1d 00 00 00 00 00");
    EXPECT_EQ(hex(wire::userKeyboard(0x08, 0x2C)), "4b 00 01 08 08 00 2c 00 00 00 00 00");
    // 6553 * 10 and 3640 * 18 are the last that fit in 16 bits.
    EXPECT_EQ(hex(wire::userPointer(1, 6553, 3640, 0xFE)), "4b 00 02 07 01 fa ff f0 ff fe fe");
    EXPECT_EQ(hex(wire::userPointer(0, 6554, -2147483647 - 1, 0)),
              "4b 00 02 07 00 04 00 00 00 00 00");
    EXPECT_EQ(wire::lights(true, false) + wire::lights(false, true),
              "out&capslock=on#numlock=offout&capslock=off#numlock=on");
}

}  // namespace
