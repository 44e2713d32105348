#include "platform/threads/waitable.h"

#include <algorithm>

namespace tarnel {

std::mutex& wait_lock() {
    static constinit std::mutex lock;
    return lock;
}

void Bells::add(const std::shared_ptr<Doorbell>& bell) {
    if (count_ < bells_.size()) {
        bells_[count_++] = bell;
    } else {
        bell->ring();
    }
}

Bells::~Bells() {
    for (std::size_t i = 0; i < count_; ++i) {
        bells_[i]->ring();
    }
}

void Waitable::complete_waits(Bells& bells) {
    WaitLink* link = first_;
    while (link && is_signalled()) {
        Wait& wait = *link->wait;
        link = link->next;
        if (!wait.satisfy()) {
            continue;
        }
        // The same wait may stand in this list twice; its links go together.
        while (link && link->wait == &wait) {
            link = link->next;
        }
        bells.add(wait.bell_);
        wait.leave_lists();
    }
}

void Waitable::wake_waiters(Bells& bells) {
    for (const WaitLink* link = first_; link; link = link->next) {
        bells.add(link->wait->bell_);
    }
}

Wait::Wait(std::span<WaitLink> links, bool all) : links_(links), all_(all) {
    for (WaitLink& link : links_) {
        link.wait = this;
    }
}

Wait::~Wait() {
    if (bell_) {
        withdraw();
    }
}

std::optional<std::size_t> Wait::try_now() {
    const std::lock_guard guard(wait_lock());
    return satisfy();
}

std::optional<std::size_t> Wait::enlist(const std::shared_ptr<Doorbell>& bell) {
    const std::lock_guard guard(wait_lock());
    if (satisfy()) {
        return result_;
    }
    bell_ = bell;
    enlisted_ = true;
    for (WaitLink& link : links_) {
        Waitable& object = *link.object;
        link.previous = object.last_;
        (object.last_ ? object.last_->next : object.first_) = &link;
        object.last_ = &link;
    }
    return std::nullopt;
}

std::optional<std::size_t> Wait::result() const {
    const std::lock_guard guard(wait_lock());
    return result_;
}

void Wait::gather(Sources& sources) const {
    sources.clear();
    const std::lock_guard guard(wait_lock());
    for (const WaitLink& link : links_) {
        sources.add(link.object->source());
    }
}

std::optional<std::size_t> Wait::withdraw() {
    const std::lock_guard guard(wait_lock());
    leave_lists();
    return result_;
}

std::optional<std::size_t> Wait::satisfy() {
    const auto signalled = [](const WaitLink& link) { return link.object->is_signalled(); };
    if (all_) {
        if (!std::ranges::all_of(links_, signalled)) {
            return std::nullopt;
        }
        std::ranges::for_each(links_, [](WaitLink& link) { link.object->consume(); });
        return result_ = 0;
    }
    const auto found = std::ranges::find_if(links_, signalled);
    if (found == links_.end()) {
        return std::nullopt;
    }
    found->object->consume();
    return result_ = static_cast<std::size_t>(found - links_.begin());
}

void Wait::leave_lists() {
    if (!enlisted_) {
        return;
    }
    enlisted_ = false;
    for (WaitLink& link : links_) {
        Waitable& object = *link.object;
        (link.previous ? link.previous->next : object.first_) = link.next;
        (link.next ? link.next->previous : object.last_) = link.previous;
    }
}

} // namespace tarnel
