#include "input/listing.h"

#include "input/discovery.h"
#include "unit/fixture.h"

namespace {

std::string device(const std::string& name, const std::string& handlers) {
    return "N: Name=\"" + name + "\"\nP: Phys=usb-1/input0\nH: Handlers=" + handlers + " \n\n";
}

std::string names(const InputDeviceList& list) {
    std::string text;
    for (std::size_t i = 0; i < list.count; ++i) {
        text += (i != 0 ? " " : "") + std::string(list.name(i));
    }
    return text;
}

struct Discovery : testing::Test {
    /// One pass over the listing as the supervisor makes it: "keyboards|mice|touch panels".
    std::string take(const std::string& text, bool restart = false) {
        const DeviceListing listing = takeListing(text);
        printed = printedBy([&] { recognisePanel(found, listing, restart, touchByName); });
        printed += printedBy([&] { classifyLines(found, listing, touchByName); });
        return names(found.keyDevices) + "|" + names(found.mouseDevices) + "|" +
               names(found.touchDevices);
    }
    bool saidFirst(const std::string& line) const { return printed.starts_with(line); }

    DeviceCounts counts;
    Devices found{counts};
    bool touchByName = false;
    std::string printed;
};

TEST_F(Discovery, PanelsAreRecognisedByName) {
    const struct {
        const char* name;
        std::int32_t type, maxX, maxY, restartMaxX, restartMaxY;
        std::uint32_t count;
        bool byName;
        std::string line, restartLine;
    } rows[] = {
        {"ILITEK ILITEK-TP", 0, 16384, 16384, 16384, 16384, 1, true, "get new touch", ""},
        {"ILITEK Multi-Touch-V3000", 1, 16384, 9600, 16384, 9600, 0, false,
         "get new V3000 systerm old touch", "get new systerm old touch"},
        {"ILITEK Multi-Touch-V5000", 1, 16384, 9600, 16384, 9600, 1, false,
         "get new V5000 systerm old touch", ""},
        {"Melfas LGDisplay", 2, 4080, 4080, 4080, 4080, 1, true, "get LG systerm old touch", ""},
        {"Siliconworks", 3, 32627, 32475, 32446, 32173, 1, true, "get Siw systerm  touch", ""}};
    for (const auto& row : rows) {
        for (const bool restart : {false, true}) {
            SCOPED_TRACE(std::string(row.name) + (restart ? ", restart" : ", first pass"));
            const std::string text = device("Mouse", "event3") + device(row.name, "mouse1 event4");
            found.panel.ilitekTouch = touchByName = false;
            take(text, restart);
            const bool other = restart && !row.restartLine.empty();
            EXPECT_TRUE(saidFirst((other ? row.restartLine : row.line) + " event-->event4\n"))
                << printed;
            EXPECT_EQ(found.panel.touchType, row.type);
            EXPECT_EQ(found.panel.touchMaxX, restart ? row.restartMaxX : row.maxX);
            EXPECT_EQ(found.panel.touchMaxY, restart ? row.restartMaxY : row.maxY);
            EXPECT_EQ(found.touchDevices.count, row.count);
            EXPECT_STREQ(found.touchDevices.name(0), "event4");
            EXPECT_EQ(touchByName, row.byName);
            EXPECT_EQ(found.panel.ilitekTouch, row.type == 0);
            touchByName = true;
            take(text, restart);
            EXPECT_TRUE(touchByName) << "none of the five clears what an earlier pass found";
        }
    }
}

TEST_F(Discovery, WithoutAPanelTheFlagsAreClearedAndTheRangeStays) {
    const std::string panel = device("ILITEK ILITEK-TP", "mouse0 event2");
    take("V06.00.00.00\n" + panel);
    EXPECT_EQ(printed, "get new touch event-->event2\nthis is touch event\n");
    EXPECT_FALSE(found.panel.touchFwV06) << "looked for after the node";
    take(panel + "S: V06.00.00.00\n");
    EXPECT_EQ(take(device("My ILITEK ILITEK-TP", "kbd event1"), true), "event1||");
    EXPECT_EQ(printed, "not get newTouch\nget key event-->event1\n");
    EXPECT_FALSE(found.panel.ilitekTouch || touchByName);
    EXPECT_EQ(found.panel.touchMaxX, 16384);
    EXPECT_TRUE(found.panel.touchFwV06) << "never forgotten";
    take(device("Plain Keyboard", "kbd event1"));
    EXPECT_EQ(printed, "not Touch\nget key event-->event1\n");
}

TEST_F(Discovery, HandlersDecideWhatADeviceIs) {
    for (const auto& [handlers, devices] : {std::pair{"sysrq kbd event0", "event0||"},
                                            {"sysrq kbd leds event10", "event10||"},
                                            {"mouse0 event11", "|event11|"},
                                            {"mouse0 event1 js0", "||event1"},
                                            {"js0 mouse0 event1", "|event1|"},
                                            {"kbd mouse0 event1", "|event1|"},
                                            {"mouse0 kbd event1", "event1|event1|"},
                                            {"event3", "||"},
                                            {"kbd", "||"}}) {
        EXPECT_EQ(take(device("Something", handlers)), devices) << handlers;
    }
    // A panel's node is cut to six characters; then names are compared whole.
    EXPECT_EQ(take(device("Siliconworks", "mouse0 event12") + device("Mouse", "mouse1 event1")),
              "|event12|event1");
    EXPECT_EQ(take(device("ILITEK Multi-Touch-V5000", "mouse0 event2") +
                   device("ILITEK Multi-Touch-V5000 Mouse", "mouse1 event5")),
              "||event2 event5");
}

TEST_F(Discovery, AGenericPanelIsTakenOnlyWhereNoneWasNamed) {
    const std::string joystick = device("Panel", "mouse1 event7 js0");
    const std::string panel = device("ILITEK Multi-Touch-V3000", "mouse0 event3 js1");
    EXPECT_EQ(take(device("Siliconworks", "mouse0 event2") + joystick), "||event2");
    EXPECT_EQ(take(panel + joystick, true), "||") << "the pass before had a named one";
    touchByName = false;
    EXPECT_EQ(take(panel + joystick, true), "||event3 event7");
    EXPECT_EQ(take(device("ILITEK Multi-Touch-V3000", "mouse0 event3"), true), "|event3|");
}

TEST_F(Discovery, WhatIsTooMuchIsLeftOutWithOneLine) {
    std::string text;
    for (int i = 0; i < 10; ++i) {
        text += "H: Handlers=kbd event" + std::to_string(i) + " \n";
    }
    EXPECT_EQ(take(text), "event0 event1 event2 event3 event4 event5 event6 event7||");
    EXPECT_NE(printed.find("left out event8\n"), std::string::npos) << printed;
    EXPECT_NE(printed.find("left out event9\n"), std::string::npos) << printed;
    text = "N: Name=\"" + std::string(kListingLimit, 'x') + "\"\n" +
           device("Siliconworks", "mouse0 event2") + device("Board", "kbd event3");
    EXPECT_EQ(take(text), "event3|event2|") << "the panel stands beyond the limit";
    EXPECT_TRUE(saidFirst("input device list too long, left out " +
                          std::to_string(text.size() - kListingLimit) + " bytes\nnot Touch\n"))
        << printed;
    EXPECT_EQ(take(""), "||");
}

TEST_F(Discovery, OnlyKeyboardsAndMiceCountTowardsTheLimits) {
    const std::size_t rows[][3] = {{64, 20, 64}, {65, 20, 64}, {64, 62, 64}, {64, 63, 64},
                                   {64, 64, 63}, {1, 4095, 1}, {1, 4096, 0}, {2, 2048, 1}};
    for (const auto& [lines, width, taken] : rows) {
        for (const char* kind : {"H: Handlers=kbd", "H: Handlers=mouse0"}) {
            std::string all, kept, named;
            for (std::size_t i = 0; i < lines; ++i) {
                std::string line = kind + std::string(" event") + std::to_string(i);
                line.resize(width, ' ');
                line += '\n';
                const std::string jack = "H: Handlers=event" + std::to_string(100 + i) + " \n";
                all += jack + line;
                kept += jack + (i < taken ? line : "");
                named += i < taken ? "" : "input device list too long, left out " + line;
            }
            EXPECT_EQ(takeListing(all).handlers, kept) << lines << " of " << width;
            take(all);
            EXPECT_TRUE(saidFirst(named + "not Touch\n")) << printed;
        }
    }
}

TEST_F(Discovery, AFullConsoleFits) {
    // Eight keyboards with their media and power keys and as much again as a kernel says of each,
    // eight mice and a panel, behind 20 audio jacks.
    std::string text;
    for (int jack = 0; jack < 20; ++jack) {
        text += device("HDA Intel Headphone", "event" + std::to_string(100 + jack));
    }
    const std::string rest = "B: KEY=" + std::string(350, '7') + "\n\n";
    for (int i = 0; i < 24; ++i) {
        text +=
            device("A Maker's Keyboard", "sysrq kbd leds event" + std::to_string(200 + i)) + rest;
    }
    for (int i = 0; i < 8; ++i) {
        text += device("Mouse", "mouse" + std::to_string(i) + " event" + std::to_string(i));
    }
    text += device("ILITEK Multi-Touch-V5000", "mouse8 event8");
    EXPECT_EQ(take(text),
              "event200 event201 event202 event203 event204 event205 event206 event207|"
              "event0 event1 event2 event3 event4 event5 event6 event7|event8");
    EXPECT_EQ(printed.find("too long"), std::string::npos) << text.size();
}

/// The kernel's own listing tells its changes; nobody plugs anything here. A plain file tells none
/// and is read at each look.
TEST(CurrentListing, SparesTheReadingOnlyWhereTheKernelTells) {
    if (!std::filesystem::exists("/proc/bus/input/devices")) {
        GTEST_SKIP() << "this kernel lists no devices";
    }
    CurrentListing kernels;
    kernels.look(false);
    EXPECT_TRUE(kernels.kernelToldAChange());
    kernels.look(true);
    EXPECT_FALSE(kernels.kernelToldAChange());
    const Root root;
    CurrentListing files;
    EXPECT_TRUE(files.look(false).full.empty()) << "none there";
    std::filesystem::create_directories(root.path("proc/bus/input"));
    for (const char* const text : {"H: Handlers=kbd event0 ", "H: Handlers=kbd event1 "}) {
        root.put("proc/bus/input/devices", text);
        EXPECT_EQ(files.look(false).full, text);
        EXPECT_FALSE(files.kernelToldAChange());
    }
}

}  // namespace
