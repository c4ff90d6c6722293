#include "rig/tour.h"

namespace rig {

const char* const kTour = R"(# A key, a combination, and the pointer with its buttons and wheel.
KEY_A down
box 127.0.0.31  key down A
KEY_A up
box 127.0.0.31  keys up

KEY_LEFTSHIFT down
box 127.0.0.31  modifiers LEFTSHIFT
KEY_7 down
box 127.0.0.31  key down LEFTSHIFT+7
KEY_7 up
box 127.0.0.31  modifiers LEFTSHIFT
KEY_LEFTSHIFT up
box 127.0.0.31  keys up

KEY_LEFTCTRL down
box 127.0.0.31  modifiers LEFTCTRL
KEY_C down
box 127.0.0.31  key down LEFTCTRL+C
KEY_C up
box 127.0.0.31  modifiers LEFTCTRL
KEY_LEFTCTRL up
box 127.0.0.31  keys up

REL_X 412; REL_Y 300; SYN
box 127.0.0.31  pointer 412,300 buttons none
BTN_LEFT down
box 127.0.0.31  pointer 412,300 buttons left
REL_X 20; SYN
box 127.0.0.31  pointer 432,300 buttons left
BTN_LEFT up
box 127.0.0.31  pointer 432,300 buttons none
REL_WHEEL -1
box 127.0.0.31  pointer 432,300 buttons none wheel -1
SYN
box 127.0.0.31  pointer 432,300 buttons none

# The pointer leaves the cell to the right: the old box is let go, the new one told its lights, the OSD the cell.
REL_X 1500; SYN
line ------right input------
box 127.0.0.31  pointer 1920,0 buttons none
box 127.0.0.31  keys up
box 127.0.0.32  lights caps off num off
osd 41237 TO:127.0.0.20,1,0
box 127.0.0.32  pointer 0,300 buttons none
REL_X 1921; SYN
line ------right output------
box 127.0.0.32  pointer 1920,0 buttons none
box 127.0.0.32  keys up
box 127.0.0.41  lights caps off num off
osd 41237 TO:127.0.0.21,0,0
box 127.0.0.41  pointer 0,300 buttons none
REL_X 1921; SYN
box 127.0.0.41  pointer 1920,0 buttons none
box 127.0.0.41  keys up
box 127.0.0.42  lights caps off num off
osd 41237 TO:127.0.0.21,1,0
box 127.0.0.42  pointer 0,300 buttons none

# Three taps of Ctrl open the OSD; keys go there until Escape closes it. (The Ctrl of Ctrl+C is too long ago.)
+700ms
KEY_LEFTCTRL down
box 127.0.0.42  modifiers LEFTCTRL
KEY_LEFTCTRL up
box 127.0.0.42  keys up
+80ms
KEY_LEFTCTRL down
box 127.0.0.42  modifiers LEFTCTRL
KEY_LEFTCTRL up
box 127.0.0.42  keys up
+80ms
KEY_LEFTCTRL down
osd 41237 OSDSTART
KEY_LEFTCTRL up
osd 41238 keys up
KEY_DOWN down
osd 41238 key down DOWN
KEY_DOWN up
osd 41238 keys up
KEY_ESC down
osd 41237 OSDQUIT
KEY_ESC up
box 127.0.0.42  keys up

# Commands: hotkeys for the OSD, a jump over the wall, the device status, new cells, a new wall.
send 41236 hotkey&ctrl+f1
line sv hotkey-->LEFTCTRL+F1#
line [SaveConfig]-110: save config succeed
KEY_LEFTCTRL down
box 127.0.0.42  modifiers LEFTCTRL
KEY_F1 down
osd 41238 key down LEFTCTRL+F1
box 127.0.0.42  keys up
KEY_F1 up
osd 41238 modifiers LEFTCTRL
box 127.0.0.42  modifiers LEFTCTRL
KEY_LEFTCTRL up
osd 41238 keys up
box 127.0.0.42  keys up
send 41236 MTO:0,0
box 127.0.0.42  pointer 1920,0 buttons none
box 127.0.0.42  keys up
box 127.0.0.31  lights caps off num off
line end get input info
send 41236 [seq]\n[control]=127.0.0.20\nusb_link_device\nend
reply [ack]\n[controlled]=127.0.0.20\nusb_link_device=110 + 15 NUL
send 41236 details&127.0.0.20#0,0,127.0.0.32-8000
line get current ip-->127.0.0.32
box 127.0.0.32  pointer 100,100 buttons none
REL_X 1; SYN
box 127.0.0.32  lights caps off num off
box 127.0.0.32  pointer 101,100 buttons none
send 41236 relation&0,0,127.0.0.20
line this is a singal screen
send 41236 relation&0,0,0
line stop kvm
REL_X 5; SYN
nothing
)";

}  // namespace rig
