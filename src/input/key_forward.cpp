#include "input/key_forward.h"

void forwardPress(const RuleState& state, Sink& sink) {
    sink.toBox(BoxReport::keys(state.keys.forBox()));
    if (!state.modes().areOff()) {
        sink.command({Order::kLetGo});
    }
}
