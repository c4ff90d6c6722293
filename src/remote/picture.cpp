#include <cstdio>
#include <utility>

#include "app/base/inputevent.h"
#include "net/udp_socket.h"
#include "remote/box_answer.h"
#include "remote/send.h"
#include "remote/source_query.h"
#include "remote/wire.h"

/// What is done with a box's answer. The query on selection and the periodic one share their steps;
/// what they print and when they write the table differs on purpose.

namespace {

constexpr std::int32_t kDefaultWidth = 1920;
constexpr std::int32_t kDefaultHeight = 1080;
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

/// Takes over a new picture size and keeps the pointer at the same place of the picture.
void applySize(std::int32_t width, std::int32_t height) {
    if (width == XRIGHT && height == YDOWN) {
        return;
    }
    const float xpre = ratioOf(width, XRIGHT);
    const float ypre = ratioOf(height, YDOWN);
    std::printf("xpre=%f\n", static_cast<double>(xpre));
    std::printf("ypre=%f\n", static_cast<double>(ypre));
    currentInfo.with([&](currentCtl& current) {
        current.pointerX = scaleTruncated(current.pointerX, xpre);
        current.pointerY = scaleTruncated(current.pointerY, ypre);
    });
    XRIGHT = width;
    YDOWN = height;
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
void applyMode(inputevent_& events, PointerMode mode, const AddressText& box) {
    if (mode == PointerMode::kRelative && !rel_enable) {
        std::puts("this input chip relation");
        currentInfo.with([](currentCtl& current) {
            current.pointerX = moved(current.pointerX, kRelativeNudge);
            current.pointerY = moved(current.pointerY, kRelativeNudge);
        });
        wire::Absolute report{};
        events.operationEvent(kMouseMove, box.c_str(), nullptr, report.data());
        rel_enable = 1;
    } else if (mode == PointerMode::kAbsolute && rel_enable) {
        std::puts("this input chip abslation");
        rel_enable = 0;
    }
}

/// False when control moved on to another box while the answer was under way.
bool isStillCurrent(const BoxAnswer& answer) { return curIp.copy() == answer.box; }

/// The size that a selected box tells: taken over and remembered. A missing height counts as 0.
void applySelectionSize(const BoxAnswer& answer, const BoxReply& reply) {
    if (reply.width->overlong || (reply.height && reply.height->overlong)) {
        XRIGHT = kDefaultWidth;
        YDOWN = kDefaultHeight;
    }
    const std::int32_t width = reply.width->value;
    const std::int32_t height = reply.height ? reply.height->value : 0;
    printSize(width, height);
    applySize(width, height);
    const unsigned n = GetViNum(answer.box.c_str());
    if (n != 0) {
        vi_info.with([&](auto& records) {
            records[n].address = answer.box;
            records[n].width = width;
            records[n].height = height;
        });
        std::printf("save vi %s (%d,%d)\n", answer.box.c_str(), width, height);
    }
}

/// Stores the pointer mode in the box's record and returns what stood there.
std::uint8_t rememberMode(const BoxAnswer& answer, std::uint8_t relative) {
    const unsigned n = GetViNum(answer.box.c_str());
    return vi_info.with(
        [&](auto& records) { return std::exchange(records[n].relative, relative); });
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
    applyMode(events, *reply.mode, answer.box);
    const std::uint8_t relative = rel_enable;
    rememberMode(answer, relative);
    std::printf("save %s vi rel :%d\n", answer.box.c_str(), relative);
}

/// Rewrites the box's record when its stored size differs. True when it did.
bool rememberSize(const BoxAnswer& answer, std::int32_t width, std::int32_t height) {
    const unsigned n = GetViNum(answer.box.c_str());
    return n != 0 && vi_info.with([&](auto& records) {
        ViInfo& record = records[n];
        if (record.width == width && record.height == height) {
            return false;
        }
        record.address = answer.box;
        record.width = width;
        record.height = height;
        return true;
    });
}

/// The size of a periodic answer. A missing height keeps the present one.
void applyPeriodicSize(const BoxAnswer& answer, const BoxReply& reply) {
    const std::int32_t width = reply.width->value;
    const std::int32_t height = reply.height ? reply.height->value : YDOWN.load();
    applySize(width, height);
    if (rememberSize(answer, width, height)) {
        printSize(width, height);
    }
}

}  // namespace

void inputevent_::getChipVersion() {
    UDPSocket* socket = InputSocket;
    const auto answer = socket != nullptr ? askBox(*socket) : std::nullopt;
    if (answer && !answer->isFromBox()) {
        std::printf("now input ip %s port %d get error Ip %s port %d\n", answer->box.c_str(),
                    boxPort(), answer->sender.c_str(), answer->port);
        return;
    }
    if (answer) {
        std::printf("get ip:%s port:%d input echo:%s\n", answer->sender.c_str(), answer->port,
                    answer->text.c_str());
        if (isStillCurrent(*answer)) {
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
        std::printf("now input ip %s get error Ip %s\n", answer->box.c_str(),
                    answer->sender.c_str());
        return;
    }
    std::printf("get ip:%s port:%d input echo:%s\n", answer->sender.c_str(), answer->port,
                answer->text.c_str());
    const BoxReply reply = parseBoxReply(answer->text);
    if (!isStillCurrent(*answer) || !reply.width) {
        return;
    }
    if (!refusesSize(reply)) {
        applyPeriodicSize(*answer, reply);
    }
    if (!reply.mode) {
        return;
    }
    applyMode(*this, *reply.mode, answer->box);
    const std::uint8_t relative = rel_enable;
    if (rememberMode(*answer, relative) != relative) {
        std::printf("get %s vi rel :%d\n", answer->box.c_str(), relative);
    }
}
