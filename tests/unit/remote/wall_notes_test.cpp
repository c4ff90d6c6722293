#include "remote/wall_notes.h"

#include "remote/wall_map.h"
#include "unit/remote/remote_state.h"

namespace {

class WallNotes : public RemoteState {
 protected:
    /// As a start reads the lines; kOutNum is their number, or 0.
    static LoadedWall load(const std::vector<std::string>& lines, bool isUsed = true) {
        outInfo_.set({});
        for (const std::string& line : lines) {
            if (line.empty() || !isUsed) {
                break;
            }
            printedBy([&line] { CreatOutIpMap(line); });
        }
        return {lines, isUsed, outInfo_.copy()};
    }
};

TEST_F(WallNotes, TellWhatWasMadeOfTheLines) {
    constexpr const char* kGood = "0,0,10.0.0.1#0,0,10.0.1.1#1,0,10.0.1.2-3";
    constexpr const char* kWall = "wall 1x1 screens, 2 boxes; this console 10.0.0.1 is screen 0,0";
    constexpr const char* kNoBox = "note: screen 0,0 shows no box in cell 0,0";
    const std::string none = "wall 0x0 screens, 0 boxes; this console 10.0.0.1 is on no screen";
    const std::string one = "wall 1x1 screens, 1 box; this console 10.0.0.1 is screen 0,0";
    const std::string empty = "wall 1x1 screens, 0 boxes; this console 10.0.0.1 is screen 0,0";
    const std::string column = ": its column is no number from 0 to 128";
    using Lines = std::vector<std::string>;
    const std::tuple<Lines, Lines, const char*> rows[] = {
        {{kGood}, {kWall}, ""},
        {{"0,0,10.0.0.9#0,0,10.0.1.1"},
         {"wall 1x1 screens, 1 box; this console 10.0.0.1 is on no screen"},
         ""},
        {{kGood, "", "", "1,0,10.0.0.2"},
         {kWall, "note: behind an empty map line, kOutIpmap3 is not used"},
         "behind an empty map line, kOutIpmap3 is not used"},
        {{"0,0,10.0.0.1#0,0,10.0.1.1,5000"}, {one}, "\"0,0,10.0.1.1,5000\" is not kept"},
        {{"0,0,10.0.0.1#0,0,10.0.1.1#1, 0,10.0.1.2#x,0,10.0.1.3"},
         {one, "not taken: 1, 0,10.0.1.2: its row is no number from 0 to 128",
          "not taken: x,0,10.0.1.3" + column},
         "\"1, 0,10.0.1.2\" and 1 more are not kept"},
        {{"0,0,10.0.0.1#0,0,a#0,0,b#129,0,c#1,0,10.0.0.100-800000000"},
         {one, "not taken: 0,0,b: 0,0 is a", "not taken: 129,0,c" + column,
          "not taken: 1,0,10.0.0.100-800000000: its address has over 19 characters"},
         "\"0,0,b\" and 2 more are not kept"},
        {{"0,0,10.0.0.1", "0,0,10.0.0.2#0,0,10.0.1.1"},
         {empty, "not taken: 0,0,10.0.0.2: 0,0 is 10.0.0.1",
          "not taken: 0,0,10.0.1.1: its screen is not taken", kNoBox},
         "\"0,0,10.0.0.2\" and 1 more are not kept"},
        {{"0;0;10.0.0.1#0,0,10.0.1.1"},
         {none, "not taken: 0;0;10.0.0.1: its row is no number from 0 to 128",
          "not taken: 0,0,10.0.1.1: its screen is not taken"},
         "\"0;0;10.0.0.1\" and 1 more are not kept"},
        {{"0,0,10.0.0.1#1,0,10.0.1.1", "1,0,10.0.0.10#0,0,10.0.2.1", "3,0,10.0.0.3#0,0,10.0.0.4"},
         {"wall 4x1 screens, 3 boxes; this console 10.0.0.1 is screen 0,0",
          "note: boxes 10.0.1.1 and 10.0.2.1 end alike and share one record of their picture",
          "note: screen 10.0.0.10 begins like 10.0.0.1: one can be taken for the other", kNoBox,
          "note: screen 3,0 is behind a hole: no edge leads there"},
         ""},
    };
    for (const auto& [lines, told, why] : rows) {
        const auto notes = describe(load(lines), "10.0.0.1");
        EXPECT_EQ(notes.lines, told);
        EXPECT_EQ(notes.lost, why);
    }
    const auto unused = describe(load({"", "", kGood, kGood}, false), "10.0.0.1");
    const std::string why = "kOutNum is 0, so kOutIpmap2 and 1 more line are not used";
    EXPECT_EQ(unused.lines, (Lines{"no wall: kOutNum is 0", "note: " + why}));
    EXPECT_EQ(unused.lost, why);
    EXPECT_EQ(describe(load({std::string(100, '#') + "0,0,a"}), "").lines.size(), 2U);
    std::string crowded = "0,0,10.0.0.1#0,0,10.0.1.1";
    for (int i = 0; i < 30; ++i) {
        crowded += "#0,0,b";
    }
    EXPECT_EQ(describe(load({crowded}), "10.0.0.1").lines.back(), "not taken: 20 more");
}

}  // namespace
