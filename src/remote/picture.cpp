#include "remote/picture.h"

#include <cmath>
#include <cstdio>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include "base/state.h"
#include "net/udp_socket.h"
#include "remote/box_answer.h"
#include "remote/box_change.h"
#include "remote/box_reply.h"
#include "remote/direction.h"
#include "remote/told.h"
#include "remote/wire.h"

/// The query on selection and the periodic one share their steps; what they print and when they
/// write the table differs on purpose. An answer counts while the box that gave it has control.

namespace {

/// How far the pointer jumps when a box turns out to take relative reports.
constexpr std::int32_t kRelativeNudge = 5;

/// Changes the box in control by `step`, unless control moved on from the box that answered;
/// nothing then. The pointer may change in the same step.
template <class Step>
auto whileInControl(const BoxAnswer& answer, Step step)
    -> std::optional<decltype(step(std::declval<BoxInControl&>(), std::declval<currentCtl&>()))> {
    std::optional<decltype(step(std::declval<BoxInControl&>(), std::declval<currentCtl&>()))>
        result;
    changeBoxInControl([&](BoxInControl& box, Told&) {
        if (box.serial == answer.asked.serial) {
            result = currentInfo.with([&](currentCtl& now) { return step(box, now); });
        }
        return std::vector<Datagram>{};
    });
    return result;
}

/// How much larger the new extent is; 1 when there was none to compare with.
float ratioOf(std::int32_t now, std::int32_t before) {
    return before == 0 ? 1.0F : static_cast<float>(now) / static_cast<float>(before);
}

struct SizeStep {
    std::int32_t width, height;
    Position pointer;  ///< before
    bool changed;
    float xpre, ypre;
};

/// Takes over a new picture size and keeps the pointer at the same place of the picture.
SizeStep takeSize(BoxInControl& box, currentCtl& now, std::int32_t width, std::int32_t height) {
    SizeStep step{width,
                  height,
                  pointerOf(now),
                  width != box.XRIGHT || height != box.YDOWN,
                  ratioOf(width, box.XRIGHT),
                  ratioOf(height, box.YDOWN)};
    if (step.changed) {
        now.pointerX = scaleTruncated(now.pointerX, step.xpre);
        now.pointerY = scaleTruncated(now.pointerY, step.ypre);
        box.XRIGHT = width;
        box.YDOWN = height;
    }
    return step;
}

void printSize(const SizeStep& step, const Position& pointer) {
    std::printf("get vi w=%d,h=%d and cur x:%d y:%d\n", step.width, step.height, pointer.x,
                pointer.y);
}

void printScale(const SizeStep& step) {
    if (step.changed) {
        std::printf("xpre=%f\n", static_cast<double>(step.xpre));
        std::printf("ypre=%f\n", static_cast<double>(step.ypre));
    }
}

/// A size that no picture has; one line says so.
bool refusesSize(const BoxReply& reply) {
    const bool refused = reply.width->value < 1 || (reply.height && reply.height->value < 1);
    if (refused) {
        std::printf("refuse vi w=%d,h=%d\n", reply.width->value,
                    reply.height ? reply.height->value : 0);
    }
    return refused;
}

/// The last report that a box gets in absolute form.
void tellNudge(const BoxAnswer& answer) {
    tellBox([&answer](const BoxInControl& box) {
        Message message;
        if (box.serial == answer.asked.serial) {
            const Position at =
                currentInfo.with([](const currentCtl& now) { return pointerOf(now); });
            message.add({box.curIp, box.port(), wire::absolute(0, at.x, at.y, 0)});
        }
        return message;
    });
}

/// Takes over the form that the box takes pointer reports in; a button that is down in the other
/// form is let go of. False when nothing changes.
bool takeForm(const BoxAnswer& answer, bool relative) {
    bool switched = false;
    changeBoxInControl([&](BoxInControl& box, Told& told) {
        if (box.serial != answer.asked.serial) {
            return std::vector<Datagram>{};
        }
        box.relativeNext = box.relativeNext && !relative;
        switched = std::exchange(box.rel_enable, relative) != relative;
        return switched ? told.takeButtonReleases() : std::vector<Datagram>{};
    });
    return switched;
}

/// Switches the pointer mode. Whoever finds a box to be relative first is the one who tells it.
void applyMode(PointerMode mode, const BoxAnswer& answer) {
    if (mode == PointerMode::kRelative) {
        const auto first = whileInControl(answer, [](BoxInControl& box, currentCtl& now) {
            const bool switches = !box.rel_enable && !box.relativeNext;
            box.relativeNext = box.relativeNext || switches;
            if (switches) {
                now.pointerX = moved(now.pointerX, kRelativeNudge);
                now.pointerY = moved(now.pointerY, kRelativeNudge);
            }
            return switches;
        });
        if (first.value_or(false)) {
            std::puts("this input chip relation");
            tellNudge(answer);
            takeForm(answer, true);
        }
    } else if (mode == PointerMode::kAbsolute) {
        if (takeForm(answer, false)) {
            std::puts("this input chip abslation");
        }
    }
}

/// The size that a selected box tells: taken over and remembered. A missing height counts as 0.
/// False when control moved on.
bool applySelectionSize(const BoxAnswer& answer, const BoxReply& reply) {
    const bool starts = reply.width->overlong || (reply.height && reply.height->overlong);
    const auto step = whileInControl(answer, [&](BoxInControl& box, currentCtl& now) {
        if (starts) {
            box.XRIGHT = kDefaultWidth;
            box.YDOWN = kDefaultHeight;
        }
        return takeSize(box, now, reply.width->value, reply.height ? reply.height->value : 0);
    });
    if (!step) {
        return false;
    }
    printSize(*step, step->pointer);
    printScale(*step);
    const unsigned n = GetViNum(answer.box().c_str());
    if (n != 0) {
        vi_info.with([&](auto& records) {
            records[n].address = answer.box();
            records[n].width = step->width;
            records[n].height = step->height;
        });
        std::printf("save vi %s (%d,%d)\n", answer.box().c_str(), step->width, step->height);
    }
    return true;
}

struct ModeChange {
    bool before = false;
    bool now = false;
};

/// Stores the pointer mode of the box in its record, in one step with what it is. An answer without
/// a usable size leaves a record that is another box's alone.
ModeChange rememberMode(const BoxAnswer& answer, bool hadSize) {
    const unsigned n = GetViNum(answer.box().c_str());
    const auto remembered = whileInControl(answer, [&](BoxInControl& box, currentCtl&) {
        const bool mode = box.rel_enable || box.relativeNext;
        ModeChange change{mode, mode};
        vi_info.with([&](auto& records) {
            if (n == 0 || hadSize || records[n].address == answer.box()) {
                change.before = std::exchange(records[n].relative, mode ? 1 : 0) != 0;
            }
            return 0;
        });
        return change;
    });
    return remembered.value_or(ModeChange{});
}

/// Everything of the query on selection but its closing line.
void applySelectionAnswer(const BoxAnswer& answer) {
    const BoxReply reply = parseBoxReply(answer.text);
    if (!reply.width) {
        return;
    }
    const bool usable = !refusesSize(reply);
    if ((usable && !applySelectionSize(answer, reply)) || !reply.mode) {
        return;
    }
    applyMode(*reply.mode, answer);
    std::printf("save %s vi rel :%d\n", answer.box().c_str(), rememberMode(answer, usable).now);
}

/// Rewrites the box's record when its stored size differs. True when it did.
bool rememberSize(const BoxAnswer& answer, const SizeStep& step) {
    const unsigned n = GetViNum(answer.box().c_str());
    return n != 0 && vi_info.with([&](auto& records) {
        ViInfo& record = records[n];
        if (record.width == step.width && record.height == step.height) {
            return false;
        }
        record.address = answer.box();
        record.width = step.width;
        record.height = step.height;
        return true;
    });
}

/// The size of a periodic answer. A missing height keeps the present one. False when control moved
/// on.
bool applyPeriodicSize(const BoxAnswer& answer, const BoxReply& reply) {
    struct Both {
        SizeStep step;
        Position after;
    };
    const auto both = whileInControl(answer, [&](BoxInControl& box, currentCtl& now) {
        const SizeStep step =
            takeSize(box, now, reply.width->value, reply.height ? reply.height->value : box.YDOWN);
        return Both{step, pointerOf(now)};
    });
    if (!both) {
        return false;
    }
    printScale(both->step);
    if (rememberSize(answer, both->step)) {
        printSize(both->step, both->after);
    }
    return true;
}

void applyPeriodicAnswer(const BoxAnswer& answer) {
    const BoxReply reply = parseBoxReply(answer.text);
    if (!reply.width || boxInControl().serial != answer.asked.serial) {
        return;
    }
    const bool usable = !refusesSize(reply);
    if ((usable && !applyPeriodicSize(answer, reply)) || !reply.mode) {
        return;
    }
    applyMode(*reply.mode, answer);
    const ModeChange mode = rememberMode(answer, usable);
    if (mode.before != mode.now) {
        std::printf("get %s vi rel :%d\n", answer.box().c_str(), mode.now);
    }
}

void printEcho(const BoxAnswer& answer) {
    std::printf("get ip:%s port:%d input echo:%s\n", answer.sender.c_str(), answer.port,
                answer.text.c_str());
}

}  // namespace

std::int32_t scaleTruncated(std::int32_t value, float ratio) {
    const double scaled = std::trunc(static_cast<double>(static_cast<float>(value) * ratio));
    constexpr auto kLowest = std::numeric_limits<std::int32_t>::min();
    constexpr auto kHighest = std::numeric_limits<std::int32_t>::max();
    if (!(scaled > kLowest)) {
        return kLowest;
    }
    return scaled < kHighest ? static_cast<std::int32_t>(scaled) : kHighest;
}

void getChipVersion() {
    UDPSocket* socket = InputSocket;
    const auto answer = socket != nullptr ? askBox(*socket) : std::nullopt;
    if (answer && !answer->isFromBox()) {
        std::printf("now input ip %s port %d get error Ip %s port %d\n", answer->box().c_str(),
                    answer->asked.port(), answer->sender.c_str(), answer->port);
        return;
    }
    if (answer) {
        printEcho(*answer);
        if (boxInControl().serial == answer->asked.serial) {
            applySelectionAnswer(*answer);
        }
    }
    std::puts("end get input info");
}

void TimegetChipVersion() { askPeriodically(); }

std::optional<BoxAsked> askPeriodically() {
    UDPSocket* socket = InputViSocket;
    const BoxInControl now = boxInControl();
    if (socket == nullptr || now.is_user_ip) {
        return std::nullopt;
    }
    const auto answer = askBox(*socket);
    if (!answer) {
        return now.isNone() ? std::nullopt : std::optional(BoxAsked{now.curIp, false});
    }
    if (!answer->isFromBox()) {
        std::printf("now input ip %s get error Ip %s\n", answer->box().c_str(),
                    answer->sender.c_str());
        return BoxAsked{answer->box(), false};
    }
    printEcho(*answer);
    applyPeriodicAnswer(*answer);
    return BoxAsked{answer->box(), true};
}
