#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace simulated {

/// One thing that happens to a console. A key, a button or a contact that is up goes down, and the
/// other way round, so that any part of a list of operations makes sense.
struct Operation {
    enum Kind : std::uint8_t {
        kKey,      ///< `a`: row of kKeys
        kButton,   ///< `a`: 0 left, 1 right
        kMove,     ///< by `a`, `b`
        kWheel,    ///< by `a`
        kContact,  ///< of the touch panel
        kTouch,    ///< at `a`, `b`
        kOrder,    ///< `a`: row of kOrders; from here to kQuery it is another thread's
        kAnswer,   ///< box `device` answers row `a` of kAnswers from now on
        kQuery,    ///< the periodic one
        kWait,     ///< `a` milliseconds; the clock may also be set, back too
        kRestart,  ///< of the listener, as a plug causes it
        kRest,     ///< the person lets go of everything, and all that is under way ends
    };
    Kind kind = kRest;
    int device = 0;
    int a = 0, b = 0;
    /// Of what a person does: 1 when it waits in its queue while the next thing happens. Of another
    /// thread: at which guard, send or wait of what follows it comes in; 0: behind what came
    /// before.
    int between = 0;

    bool isAnotherThreads() const { return kind >= kOrder && kind <= kQuery; }
    std::string text() const;
};
using Operations = std::vector<Operation>;

struct Key {
    int code;               ///< evdev
    std::uint8_t usage;     ///< HID; 0 for a modifier
    std::uint8_t modifier;  ///< its bit
    bool isPlain() const;   ///< a letter: no rule looks at it
};
extern const std::vector<Key> kKeys;
extern const std::vector<std::string> kOrders;
extern const std::vector<std::string> kAnswers;

}  // namespace simulated
