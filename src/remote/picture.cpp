#include <cstdio>
#include <utility>

#include "base/inputevent.h"
#include "net/udp_socket.h"
#include "remote/box_answer.h"
#include "remote/send.h"
#include "remote/source_query.h"
#include "remote/wire.h"

/// What is done with a box's answer. The query on selection and the periodic one share their steps;
/// what they print and when they write the table differs on purpose.

namespace {

/// How far the pointer jumps when a box turns out to take relative reports.
constexpr std::int32_t kRelativeNudge = 5;

void printSize(std::int32_t width, std::int32_t height) {
    struct Position {
        std::int32_t x, y;
    };
    const Position at = currentInfo.with([](const currentCtl& current) {
        return Position{current.pointerX, current.pointerY};
    });
    std::printf("get vi w=%d,h=%d and cur x:%d y:%d\n", width, height, at.x, at.y);
}

/// How much larger the new extent is; 1 when there was none to compare with.
float ratioOf(std::int32_t now, std::int32_t before) {
    return before == 0 ? 1.0F : static_cast<float>(now) / static_cast<float>(before);
}

/// Runs `store` on the facts of the box in control, unless control moved on from the box that
/// answered. False then.
template <class Store>
bool whileInControl(const BoxAnswer& answer, Store store) {
    const std::lock_guard hold(boxGuard);
    if (curIp.copy() != answer.asked.ip || port_add != answer.asked.portAdd) {
        return false;
    }
    store();
    return true;
}

/// Takes over a new picture size and keeps the pointer at the same place of the picture.
void applySize(const BoxAnswer& answer, std::int32_t width, std::int32_t height) {
    if (width == XRIGHT && height == YDOWN) {
        return;
    }
    const float xpre = ratioOf(width, XRIGHT);
    const float ypre = ratioOf(height, YDOWN);
    std::printf("xpre=%f\n", static_cast<double>(xpre));
    std::printf("ypre=%f\n", static_cast<double>(ypre));
    whileInControl(answer, [&] {
        currentInfo.with([&](currentCtl& current) {
            current.pointerX = scaleTruncated(current.pointerX, xpre);
            current.pointerY = scaleTruncated(current.pointerY, ypre);
        });
        XRIGHT = width;
        YDOWN = height;
    });
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

/// Switches the pointer mode. The nudge is the last report that the box gets in absolute form.
void applyMode(inputevent_& events, PointerMode mode, const BoxAnswer& answer) {
    if (mode == PointerMode::kRelative && !rel_enable) {
        std::puts("this input chip relation");
        currentInfo.with([](currentCtl& current) {
            current.pointerX = moved(current.pointerX, kRelativeNudge);
            current.pointerY = moved(current.pointerY, kRelativeNudge);
        });
        wire::Absolute report{};
        events.operationEvent(kMouseMove, answer.box().c_str(), nullptr, report.data());
        whileInControl(answer, [] { rel_enable = 1; });
    } else if (mode == PointerMode::kAbsolute && rel_enable) {
        std::puts("this input chip abslation");
        whileInControl(answer, [] { rel_enable = 0; });
    }
}

bool isInControl(const BoxAnswer& answer) {
    return whileInControl(answer, [] {});
}

/// The size that a selected box tells: taken over and remembered. A missing height counts as 0.
void applySelectionSize(const BoxAnswer& answer, const BoxReply& reply) {
    if (reply.width->overlong || (reply.height && reply.height->overlong)) {
        whileInControl(answer, [] {
            XRIGHT = kDefaultWidth;
            YDOWN = kDefaultHeight;
        });
    }
    const std::int32_t width = reply.width->value;
    const std::int32_t height = reply.height ? reply.height->value : 0;
    printSize(width, height);
    applySize(answer, width, height);
    const unsigned n = GetViNum(answer.box().c_str());
    if (n != 0) {
        vi_info.with([&](auto& records) {
            records[n].address = answer.box();
            records[n].width = width;
            records[n].height = height;
        });
        std::printf("save vi %s (%d,%d)\n", answer.box().c_str(), width, height);
    }
}

/// Stores the pointer mode of the box in its record.
struct ModeChange {
    std::uint8_t before = 0;
    std::uint8_t now = 0;
};
ModeChange rememberMode(const BoxAnswer& answer) {
    const unsigned n = GetViNum(answer.box().c_str());
    ModeChange change;
    whileInControl(answer, [&] {
        change.now = rel_enable;
        change.before = vi_info.with(
            [&](auto& records) { return std::exchange(records[n].relative, change.now); });
    });
    return change;
}

/// Everything of the query on selection but its closing line.
void applySelectionAnswer(inputevent_& events, const BoxAnswer& answer) {
    const BoxReply reply = parseBoxReply(answer.text);
    if (!reply.width) {
        return;
    }
    if (!refusesSize(reply)) {
        applySelectionSize(answer, reply);
    }
    if (!reply.mode) {
        return;
    }
    applyMode(events, *reply.mode, answer);
    std::printf("save %s vi rel :%d\n", answer.box().c_str(), rememberMode(answer).now);
}

/// Rewrites the box's record when its stored size differs. True when it did.
bool rememberSize(const BoxAnswer& answer, std::int32_t width, std::int32_t height) {
    const unsigned n = GetViNum(answer.box().c_str());
    return n != 0 && vi_info.with([&](auto& records) {
        ViInfo& record = records[n];
        if (record.width == width && record.height == height) {
            return false;
        }
        record.address = answer.box();
        record.width = width;
        record.height = height;
        return true;
    });
}

/// The size of a periodic answer. A missing height keeps the present one.
void applyPeriodicSize(const BoxAnswer& answer, const BoxReply& reply) {
    const std::int32_t width = reply.width->value;
    const std::int32_t height = reply.height ? reply.height->value : YDOWN.load();
    applySize(answer, width, height);
    if (rememberSize(answer, width, height)) {
        printSize(width, height);
    }
}

}  // namespace

void inputevent_::getChipVersion() {
    UDPSocket* socket = InputSocket;
    const auto answer = socket != nullptr ? askBox(*socket) : std::nullopt;
    if (answer && !answer->isFromBox()) {
        std::printf("now input ip %s port %d get error Ip %s port %d\n", answer->box().c_str(),
                    answer->asked.port, answer->sender.c_str(), answer->port);
        return;
    }
    if (answer) {
        std::printf("get ip:%s port:%d input echo:%s\n", answer->sender.c_str(), answer->port,
                    answer->text.c_str());
        if (isInControl(*answer)) {
            applySelectionAnswer(*this, *answer);
        }
    }
    std::puts("end get input info");
}

void inputevent_::TimegetChipVersion() {
    UDPSocket* socket = InputViSocket;
    if (socket == nullptr || is_user_ip) {
        return;
    }
    const auto answer = askBox(*socket);
    if (!answer) {
        return;
    }
    if (!answer->isFromBox()) {
        std::printf("now input ip %s get error Ip %s\n", answer->box().c_str(),
                    answer->sender.c_str());
        return;
    }
    std::printf("get ip:%s port:%d input echo:%s\n", answer->sender.c_str(), answer->port,
                answer->text.c_str());
    const BoxReply reply = parseBoxReply(answer->text);
    if (!isInControl(*answer) || !reply.width) {
        return;
    }
    if (!refusesSize(reply)) {
        applyPeriodicSize(*answer, reply);
    }
    if (!reply.mode) {
        return;
    }
    applyMode(*this, *reply.mode, *answer);
    const ModeChange mode = rememberMode(*answer);
    if (mode.before != mode.now) {
        std::printf("get %s vi rel :%d\n", answer->box().c_str(), mode.now);
    }
}
