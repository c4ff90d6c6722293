#pragma once

#include <array>
#include <optional>
#include <vector>

#include "remote/box_in_control.h"
#include "remote/wire.h"

/// What is down at the boxes, by what they were last told, one memory for each form of report. It
/// stands under the guard of the box in control.
///
///   keys A down       note: A is down
///   keys up           note: nothing is down
///   keys A down       note: A is down
///   control moves     take: "keys up" for where A went; nothing is down
class Told {
 public:
    /// How often the form of a datagram was let go of.
    using Ticket = unsigned;

    /// Remembers that `sent` is about to leave. A datagram of no form, and one that lets go of what
    /// was not told where it goes, changes nothing.
    Ticket note(const Datagram& sent);

    /// True when the form of `sent` was let go of since it was noted.
    bool wasOvertaken(const Datagram& sent, Ticket ticket) const;

    /// Takes out everything that is down: one datagram a form, to where it was told, that lets go.
    std::vector<Datagram> takeReleases();
    /// The same of the pointer's forms alone: the box will take another form from now on.
    std::vector<Datagram> takeButtonReleases();

    /// Remembers a release that could not leave: the box still believes that something is down. One
    /// for a place that was told of something new since, and what is no release, changes nothing.
    void owe(const Datagram& release);
    /// Takes out what is owed, oldest first.
    std::vector<Datagram> takeOwed();

 private:
    template <class Takes>
    std::vector<Datagram> take(Takes takes);
    void forgetOwed(const Datagram& sent);

    struct Memory {
        std::optional<Datagram> down;
        Ticket letGo = 0;
    };
    std::array<Memory, wire::kForms> forms_;
    std::vector<Datagram> owed_;  ///< one a place and form
};

/// The datagram that lets go of what `sent` pressed: buttons and keys up, the pointer where it was.
/// Nothing when it pressed nothing.
std::optional<Datagram> releaseOf(const Datagram& sent);
