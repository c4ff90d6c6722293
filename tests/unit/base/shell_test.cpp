#include "base/shell.h"

#include "unit/fixture.h"

namespace {

TEST(Shell, OnAVirtualBoardRunsOnlyWhatTheBoardHas) {
    const Root root;
    std::filesystem::create_directories(root.path("bin"));
    const std::string real = "touch " + root.path("left");
    runShell(real.c_str());
    EXPECT_FALSE(std::filesystem::exists(root.path("left"))) << "this machine's own program";
    root.put("bin/himm", "#!/bin/sh\necho \"$@\" > " + root.path("left") + "\n");
    chmod(root.path("bin/himm").c_str(), 0755);
    runShell("himm 0x120F02D8     0x0");
    EXPECT_EQ(root.get("left"), "0x120F02D8 0x0\n");
}

}  // namespace
