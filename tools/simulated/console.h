#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "base/waiting.h"
#include "control/command_channel.h"
#include "input/console_sink.h"
#include "input/serving.h"
#include "net/udp_socket.h"
#include "simulated/operation.h"

namespace simulated {

/// Where a report went; `form` is a row of console.cpp's table of forms.
struct Place {
    std::string ip;
    int port = 0;
    std::size_t form = 0;
    bool operator==(const Place&) const = default;
    bool operator<(const Place& other) const {
        return std::tie(ip, port, form) < std::tie(other.ip, other.port, other.form);
    }
};

/// What a report says is down.
struct Down {
    std::uint8_t modifiers = 0, usage = 0, buttons = 0;
    bool any() const { return (modifiers | usage | buttons) != 0; }
};

/// A whole console in one thread, without sockets, files and a clock: what people do is pushed into
/// the queues of its devices, its pauses advance a simulated time, its datagrams end at simulated
/// boxes, which know nothing but their bytes. Everything behind the queues is the daemon's own, its
/// process-wide state too: one console at a time. What another thread does comes in at a guard, a
/// send or a wait. Whoever derives from it looks on.
class Console : Waiting {
 public:
    struct Options {
        bool osdIsHere = true;
        bool releaseEverything = false;
    };
    explicit Console(const Options& options);
    ~Console() override;
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    /// Lets it all happen, then rests, as long as goesOn(). What is printed goes nowhere.
    void run(const Operations& operations);

    // What no list of operations has: one operation at once, any command, any answer of the first
    // box, any record of a device (keyboards 0 and 1, mice 2 and 3, then the panel).
    void happensNow(const Operation& operation);
    void order(const std::string& text);
    void answer(const std::string& text);
    void give(unsigned device, InputRecord record);

    // For the doubles of the system's calls.
    void takeDatagram(const Place& to, std::string_view bytes, int fd);
    std::optional<std::pair<std::string, std::string>> takeAnswer(int fd);
    void comeBetween();

 protected:
    virtual bool goesOn() const { return true; }
    /// A report arrived. `isItsBoxes`: there is such a box, and what is pressed goes to its port in
    /// its form.
    virtual void reported(const Place& /*place*/, const Down& /*down*/, bool /*isItsBoxes*/) {}
    /// The rules gave one report to the box in control: so many datagrams came of it, so many were
    /// due.
    virtual void composed(int /*datagrams*/, int /*due*/) {}
    virtual void beforePass() {}
    virtual void afterPass() {}
    virtual void served() {}  ///< nothing waits any more
    /// A key or a button that no rule looks at was pressed or let go of and served.
    virtual void plainlyServed(const Place& /*place*/, bool /*isKey*/, bool /*pressed*/) {}

    const Options& options() const { return options_; }
    const Modes& modes() const { return console_.modes; }
    /// What is held, by its rows of kKeys and as button bits.
    std::set<std::size_t> heldKeys() const;
    std::uint8_t heldButtons() const;
    /// What each place was last told is down.
    const std::map<Place, Down>& told() const { return told_; }
    Down toldAt(const Place& place) const;
    /// A place where something is down that control has left; nothing when there is none.
    std::optional<Place> downWhereControlLeft();
    /// True when a button came up while the pointer was not the box's, and none since.
    bool missedRelease() const { return missed_[0] || missed_[1]; }
    bool startWasOrdered() const { return startOrdered_; }

 private:
    struct Sink : ConsoleSink {
        Sink(RuleState& state, Console& console) : ConsoleSink(state), console_(console) {}
        void toBox(const BoxReport& report) override;
        Console& console_;
    };

    /// True when control is where such a report goes.
    bool isInControl(const Place& place);
    /// The box in control, without an operation that comes in between.
    BoxInControl boxNow();

    void rest(std::int64_t microseconds) override;
    int untilReadable(int fd, int milliseconds) override;

    void happen(const Operation& operation);
    void happenPlainly(const Operation& operation);
    void act(const Operation& operation);
    void actAtDevice(const Operation& operation);
    void push(InputDeviceList& list, std::size_t slot, int type, int code, int value);
    void toggle(InputDeviceList& list, std::size_t slot, int code);
    void letGoOfAll();
    void serve();
    void serveOnce();
    void restart();
    bool isForBox() const { return console_.modes.areOff() && !console_.modes.touchPaused; }

    const Options options_;
    ConsoleState console_;
    DeviceCounts counts_;
    Devices devices_{counts_};
    RuleState state_;
    Sink sink_{state_, *this};
    std::optional<Serving> serving_;
    CommandChannel commands_{console_, counts_};
    std::array<UDPSocket, 3> sockets_;
    const WaitingPlace place_{*this};

    std::int64_t now_ = 1'000'000'000'000;  ///< microseconds
    std::deque<Operation> between_;         ///< of other threads, not yet come in
    bool comesBetween_ = false;
    int cameBetween_ = 0, reports_ = 0;
    bool startOrdered_ = false;  ///< "OSDSTART", in the pass under way
    std::map<Place, Down> told_;
    std::map<std::string, std::string> answers_;                  ///< of the boxes, by address
    std::map<int, std::pair<std::string, std::string>> waiting_;  ///< sender and text, by socket
    std::set<std::tuple<InputDeviceList*, std::size_t, int>> held_;
    /// Of mice and of panels: what waits to be served (true: a button comes up), by device.
    std::array<std::array<std::deque<bool>, 2>, 2> ups_;
    std::array<bool, 2> missed_{};
};

}  // namespace simulated
