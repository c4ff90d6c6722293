#include "remote/source_query.h"

#include "base/log_queue.h"
#include "base/state.h"
#include "base/text.h"
#include "base/waiting.h"
#include "base/work_bound.h"
#include "net/udp_socket.h"
#include "remote/box_in_control.h"
#include "remote/box_presence.h"
#include "remote/picture.h"
#include "remote/wire.h"

namespace {

constexpr std::int64_t kQueryPeriodMicroseconds = 5'000'000;
constexpr std::int64_t kQuerySlackMicroseconds = 200'000;

}  // namespace

void* viThr(void* /*unused*/) {
    auto* socket = new UDPSocket;  // lives as long as the process
    socket->CreateUDPServer(wire::kQuerySourcePort, 1, true, true);
    InputViSocket = socket;
    const DeferredLog log;  // the log's thread wakes once a query, not once a line
    BoxPresence presence;
    WorkBound bound(std::chrono::seconds(10));
    for (;;) {
        const AddressText box = boxInControl().curIp;
        if (!box.empty() && !box.view().starts_with(AddressText::kNone)) {
            bound.begin();
            if (const auto asked = askPeriodically()) {
                printUnlessEmpty(presence.note(asked->box, asked->answered));
            }
            bound.end();
        }
        letLogLeave();
        sleepRoughly(kQueryPeriodMicroseconds, kQuerySlackMicroseconds);
    }
}
