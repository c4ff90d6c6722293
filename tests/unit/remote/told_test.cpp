#include "remote/told.h"

#include <gtest/gtest.h>

namespace {

TEST(Told, IsWhatEachEndpointHeardLastInEachForm) {
    const Datagram down{AddressText{"10.0.0.1"}, 80, wire::keyboard(0, 0x04)};
    const Datagram elsewhere{AddressText{"10.0.0.1"}, 81, wire::kKeyRelease};
    const Datagram up{AddressText{"10.0.0.1"}, 80, wire::kKeyRelease};
    Told told;
    const Told::Ticket ticket = told.note(down);
    EXPECT_EQ(told.note(elsewhere), ticket);
    told.note({down.ip, 80, wire::kPointerRelease});
    EXPECT_FALSE(told.wasOvertaken(down, ticket) || told.nothingIsDown())
        << "another place, another form";
    told.note(up);
    EXPECT_TRUE(told.wasOvertaken(down, ticket) && told.nothingIsDown());
    EXPECT_TRUE(told.takeReleases().empty());
    const Told::Ticket second = told.note(down);
    EXPECT_FALSE(told.wasOvertaken(down, second));
    const auto releases = told.takeReleases();
    ASSERT_EQ(releases.size(), 1U);
    EXPECT_TRUE(releases[0].goesWhere(down));
    EXPECT_TRUE(told.wasOvertaken(down, second) && told.nothingIsDown());
    EXPECT_FALSE(releaseOf(up) || releaseOf({down.ip, 80, std::array<std::uint8_t, 2>{0x57, 1}}));
}

}  // namespace
