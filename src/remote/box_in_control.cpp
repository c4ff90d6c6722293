#include "remote/box_in_control.h"

#include <algorithm>

#include "base/guarded.h"
#include "remote/box_change.h"
#include "remote/send.h"
#include "remote/told.h"

namespace {

struct Controlled {
    BoxInControl box;
    Told told;
    unsigned sending = 0;  ///< senders that are not done
};

Guarded<Controlled>& controlled() {
    static auto* one = new Guarded<Controlled>;  // outlives every thread
    return *one;
}

/// A message with what was noted of each of its datagrams.
struct Noted {
    Message message;
    std::array<Told::Ticket, Message::kMost> tickets{};
};

/// What has to be let go of again, because somebody did so while it was on its way.
Message overtaken(const Controlled& now, const Noted& sent) {
    Message releases;
    for (std::size_t i = 0; i < sent.message.size(); ++i) {
        const auto release = releaseOf(sent.message[i]);
        if (release && now.told.wasOvertaken(sent.message[i], sent.tickets[i])) {
            releases.add(*release);
        }
    }
    return releases;
}

/// A release that could not leave is owed to its box.
template <class Datagrams>
void sendAll(const Datagrams& datagrams) {
    for (const Datagram& datagram : datagrams) {
        if (!sendToBox(datagram)) {
            controlled().with([&datagram](Controlled& now) { now.told.owe(datagram); });
        }
    }
}

void endSending() {
    controlled().with([](Controlled& now) { --now.sending; });
}

/// Sends the releases that `take` takes under the guard.
template <class Take>
void takeAndSend(Take take) {
    const std::vector<Datagram> releases = controlled().with([&take](Controlled& now) {
        std::vector<Datagram> taken = take(now);
        now.sending += taken.empty() ? 0 : 1;
        return taken;
    });
    if (!releases.empty()) {
        sendAll(releases);
        endSending();
    }
}

/// The last look of a sender. What was overtaken is let go of before the sender counts as done.
void lookAgain(const Noted& sent) {
    const Message releases = controlled().with([&](Controlled& now) {
        Message late = overtaken(now, sent);
        now.sending -= late.empty() ? 1 : 0;
        return late;
    });
    if (!releases.empty()) {
        sendAll(releases);
        endSending();
    }
}

}  // namespace

bool BoxInControl::isSameBox(const BoxInControl& other) const {
    return curIp == other.curIp && is_user_ip == other.is_user_ip && inputPort == other.inputPort &&
           port_add == other.port_add;
}

Datagram::Datagram(const AddressText& to, std::int32_t at, std::span<const std::uint8_t> content)
    : ip(to), port(at), size(std::min(content.size(), kMostBytes)) {
    std::copy_n(content.begin(), size, bytes.begin());
}

void Message::add(const Datagram& datagram) {
    if (!datagram.ip.isNone() && size_ < kMost) {
        datagrams_[size_++] = datagram;
    }
}

BoxInControl boxInControl() {
    return controlled().with([](const Controlled& now) { return now.box; });
}

BoxInControl tellBox(Compose compose) {
    Noted sent;
    const BoxInControl box = controlled().with([&](Controlled& now) {
        sent.message = compose(now.box);
        for (std::size_t i = 0; i < sent.message.size(); ++i) {
            sent.tickets[i] = now.told.note(sent.message[i]);
        }
        now.sending += sent.message.empty() ? 0 : 1;
        return now.box;
    });
    if (!sent.message.empty()) {
        sendAll(sent.message);
        lookAgain(sent);
    }
    return box;
}

bool nobodyIsSending() {
    return controlled().with([](const Controlled& now) { return now.sending == 0; });
}

void changeBoxInControl(Change change) {
    takeAndSend([&change](Controlled& now) { return change(now.box, now.told); });
}

void sendWhatIsOwed() {
    takeAndSend([](Controlled& now) { return now.told.takeOwed(); });
}
