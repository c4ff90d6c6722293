#include "app/inputevent.h"

#include "input/key_report.h"
#include "input/listener.h"
#include "input/probe.h"
#include "remote/current_screen.h"
#include "remote/edge_crossing.h"
#include "remote/lights.h"
#include "remote/picture.h"
#include "remote/reports.h"
#include "remote/selection.h"
#include "remote/wall_map.h"

// The required operations as members of the object. The program takes the functions behind them.

namespace {

std::uint8_t* bytes(char* text) { return reinterpret_cast<std::uint8_t*>(text); }

}  // namespace

int inputevent_::openInputFd() { return ::openInputFd(devices); }
int inputevent_::closeInputFd(bool mouse, bool key, bool touch) {
    return ::closeInputFd(devices, console.lights, mouse, key, touch);
}
int inputevent_::check_input_event() { return ::check_input_event(devices, console.lights); }
unsigned inputevent_::listenInputFd() { return ::listenInputFd(devices, console); }

int inputevent_::OnKeyDown(int code, char* report, char, char, char, char* name) {
    return ::OnKeyDown(console.lights, code, bytes(report), 0, 0, 0, name);
}
int inputevent_::OnKeyUp(int code, char* report, char) { return ::OnKeyUp(code, bytes(report), 0); }
int inputevent_::GetChar(char* report, char* text) { return ::GetChar(bytes(report), text); }

int inputevent_::getInputMouseLocation(char* buf) {
    return ::getInputMouseLocation(console.motion, bytes(buf));
}
int inputevent_::operationEvent(EventType type, char* ip, void* ev, char* buf) {
    return ::operationEvent(console.motion, type, ip, static_cast<const InputRecord*>(ev),
                            bytes(buf));
}
int inputevent_::user_send_mk(EventType type, char* mouse, char* key) {
    return ::user_send_mk(type, bytes(mouse), bytes(key));
}
int inputevent_::releaseKey() { return ::releaseKey(); }
int inputevent_::releaseInput(char* ip) { return ::releaseInput(ip); }
int inputevent_::sendRelease() { return ::sendRelease(console.motion); }
int inputevent_::syncLed(bool send) { return ::syncLed(console.lights, send); }
int inputevent_::MouseTo(int x, int y) { return ::MouseTo(console, x, y); }

int inputevent_::GetCurInip(unsigned inKey, char* ipOut) { return ::GetCurInip(inKey, ipOut); }
int inputevent_::getCurrentInfo_(unsigned* outKey, bool flag) {
    return ::getCurrentInfo_(outKey, flag);
}
void inputevent_::getChipVersion() { ::getChipVersion(); }
void inputevent_::TimegetChipVersion() { ::TimegetChipVersion(); }

unsigned inputevent_::slideScreenLeft() { return cross(console, Direction::kLeft); }
unsigned inputevent_::slideScreenRight() { return cross(console, Direction::kRight); }
unsigned inputevent_::slideScreenUp() { return cross(console, Direction::kUp); }
unsigned inputevent_::slideScreenDown() { return cross(console, Direction::kDown); }
