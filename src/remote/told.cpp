#include "remote/told.h"

#include <algorithm>
#include <utility>

Told::Ticket Told::note(const Datagram& sent) {
    const wire::FormRow* form = wire::formOf(sent.content());
    if (form == nullptr) {
        return 0;
    }
    forgetOwed(sent);
    Memory& memory = forms_[form->index];
    if (wire::isDown(*form, sent.content())) {
        memory.down = sent;
    } else if (memory.down && memory.down->goesWhere(sent)) {
        memory.down.reset();
        ++memory.letGo;
    }
    return memory.letGo;
}

void Told::forgetOwed(const Datagram& sent) {
    std::erase_if(owed_, [&sent](const Datagram& owed) {
        return owed.goesWhere(sent) && wire::formOf(owed.content()) == wire::formOf(sent.content());
    });
}

void Told::owe(const Datagram& release) {
    constexpr std::size_t kMostOwed = 64;
    const wire::FormRow* form = wire::formOf(release.content());
    if (form == nullptr || wire::isDown(*form, release.content())) {
        return;
    }
    const auto& down = forms_[form->index].down;
    if (down && down->goesWhere(release)) {
        return;
    }
    forgetOwed(release);
    if (owed_.size() == kMostOwed) {
        owed_.erase(owed_.begin());
    }
    owed_.push_back(release);
}

std::vector<Datagram> Told::takeOwed() { return std::exchange(owed_, {}); }

bool Told::wasOvertaken(const Datagram& sent, Ticket ticket) const {
    const wire::FormRow* form = wire::formOf(sent.content());
    return form != nullptr && forms_[form->index].letGo != ticket;
}

template <class Takes>
std::vector<Datagram> Told::take(Takes takes) {
    std::vector<Datagram> releases;
    for (Memory& memory : forms_) {
        if (memory.down && takes(*wire::formOf(memory.down->content()))) {
            releases.push_back(*releaseOf(*memory.down));
            memory.down.reset();
            ++memory.letGo;
        }
    }
    return releases;
}

std::vector<Datagram> Told::takeReleases() {
    return take([](const wire::FormRow&) { return true; });
}

std::vector<Datagram> Told::takeButtonReleases() {
    return take([](const wire::FormRow& form) { return form.motionAt != form.motionEnd; });
}

std::optional<Datagram> releaseOf(const Datagram& sent) {
    const wire::FormRow* form = wire::formOf(sent.content());
    if (form == nullptr || !wire::isDown(*form, sent.content())) {
        return std::nullopt;
    }
    Datagram release = sent;
    wire::letGo(*form, std::span(release.bytes).first(release.size));
    return release;
}
