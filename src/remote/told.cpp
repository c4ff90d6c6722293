#include "remote/told.h"

#include <algorithm>

Told::Ticket Told::note(const Datagram& sent) {
    const wire::FormRow* form = wire::formOf(sent.content());
    if (form == nullptr) {
        return 0;
    }
    Memory& memory = forms_[form->index];
    if (wire::isDown(*form, sent.content())) {
        memory.down = sent;
    } else if (memory.down && memory.down->goesWhere(sent)) {
        memory.down.reset();
        ++memory.letGo;
    }
    return memory.letGo;
}

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
