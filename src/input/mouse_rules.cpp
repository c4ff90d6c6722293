#include "input/mouse_rules.h"

#include <linux/input-event-codes.h>

#include <algorithm>

#include "remote/pointer_buffer.h"

namespace {

/// Codes 0x100 and upward are buttons.
constexpr std::uint16_t kButtonRange = 0x100;

Shared<std::int32_t>& remoteMotion(Motion& motion, Axis axis) {
    return axis == Axis::kX ? motion.remoteDx : motion.remoteDy;
}

Shared<std::int32_t>& localMotion(Motion& motion, Axis axis) {
    return axis == Axis::kX ? motion.localDx : motion.localDy;
}

}  // namespace

/// Any type that is neither motion nor the end of a report counts as a button event.
void MouseRules::serve(const InputRecord& record) {
    if (record.type == EV_SYN) {
        tell(0);
    } else if (record.type != EV_REL) {
        button(record);
    } else if (record.code == REL_X) {
        move(Axis::kX, record.value);
    } else if (record.code == REL_Y) {
        move(Axis::kY, record.value);
    } else if (record.code == REL_WHEEL) {
        turnWheel(record.value);
    }
}

void MouseRules::tell(std::int32_t wheel) {
    preparePointer(buffer_.data(), wheel,
                   state_.place.with([](const currentCtl& now) { return pointerOf(now); }));
    sink_.toBox(BoxReport::pointer(buffer_));
}

void MouseRules::turnWheel(std::int32_t by) {
    sink_.line("is wheel\n");
    tell(by);
}

void MouseRules::button(const InputRecord& record) {
    if ((record.code & kButtonRange) == 0) {
        return;
    }
    sink_.line("is wheel\n");
    applyMouseButton(record.code, record.value, buffer_[wire::kButtonsAt]);
    tell(buffer_[wire::kWheelAt]);
}

void MouseRules::move(Axis axis, std::int32_t by) {
    Motion& motion = state_.console.motion;
    const bool relative = state_.box.rel_enable;
    if (relative) {
        remoteMotion(motion, axis).add(by);
        if (axis == Axis::kY && state_.osdIsHere) {
            return;  // unlike x, the kept position does not follow
        }
    }
    if (!state_.osdIsHere) {
        localMotion(motion, axis).add(by);
    }
    const std::int32_t at = state_.place.with([=](currentCtl& now) {
        setPointer(now, axis, moved(pointerOf(now)[axis], by));
        return pointerOf(now)[axis];
    });
    if (!relative) {
        const auto* const over =
            std::find_if(kDirections.begin(), kDirections.end(), [&](const DirectionRow& row) {
                return row.axis == axis && isBeyond(row, at, pictureOf(state_.box)[axis]);
            });
        if (over != kDirections.end()) {
            sink_.command({Order::kCross, over->direction});
        }
    }
    const std::int32_t extent = pictureOf(state_.box)[axis];
    state_.place.with(
        [=](currentCtl& now) { setPointer(now, axis, std::min(pointerOf(now)[axis], extent)); });
}

void MouseRules::miss(const InputRecord& record) {
    if (record.type == EV_KEY && record.value == 0) {
        applyMouseButton(record.code, 0, buffer_[wire::kButtonsAt]);
    }
}

void MouseRules::serveForOsd(const InputRecord& record) {
    if (state_.osdIsHere) {
        return;
    }
    if (record.type == EV_REL) {
        moveOsd(record);
    } else if (record.type == EV_SYN) {
        tellOsd(0);
        state_.console.motion.localDx = 0;
        state_.console.motion.localDy = 0;
    } else if ((record.code & kButtonRange) != 0) {
        pressOsd(record);
    }
}

void MouseRules::tellOsd(std::uint8_t wheel) {
    const Motion& motion = state_.console.motion;
    sink_.toOsd(OsdPort::kHereCommands,
                wire::relative(osdButtons_, motion.localDx, motion.localDy, wheel));
}

void MouseRules::moveOsd(const InputRecord& record) {
    if (record.code == REL_X) {
        state_.console.motion.localDx.add(record.value);
    } else if (record.code == REL_Y) {
        state_.console.motion.localDy.add(record.value);
    } else if (record.code == REL_WHEEL) {
        tellOsd(wire::low8(record.value));
        sink_.line("send mouse wheel 0x%d\n", record.value);
    }
}

void MouseRules::pressOsd(const InputRecord& record) {
    const bool known = record.value == 1 && (record.code == BTN_LEFT || record.code == BTN_RIGHT ||
                                             record.code == BTN_MIDDLE);
    if (known) {
        applyMouseButton(record.code, record.value, osdButtons_);
    } else {
        osdButtons_ = 0;  // any release, and any other button
    }
}
