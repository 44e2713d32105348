#include "platform/threads/doorbell.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>

namespace tarnel {
namespace {

/// Rounded up, so that a host that waits this long finds the deadline passed.
int whole_milliseconds(const Deadline& deadline) {
    if (deadline.endless()) {
        return -1;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline.remaining()).count();
    return static_cast<int>(std::min<std::int64_t>(left, INT_MAX));
}

timespec to_timespec(std::chrono::nanoseconds time) {
    constexpr std::int64_t per_second = 1'000'000'000;
    return {.tv_sec = time.count() / per_second, .tv_nsec = time.count() % per_second};
}

} // namespace

std::shared_ptr<Doorbell> Doorbell::make() {
    Descriptor event(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC));
    return event ? std::shared_ptr<Doorbell>(new Doorbell(std::move(event))) : nullptr;
}

void Doorbell::write_ring() {
    // Cannot fail: the counter is far from its end, and the descriptor lives with the bell.
    static_cast<void>(::eventfd_write(event_.get(), 1));
}

thread_local constinit HeldRing* HeldRing::own_ = nullptr;

HeldRing::HeldRing() {
    own_ = this;
}

HeldRing::~HeldRing() {
    let_out();
    own_ = nullptr;
}

void HeldRing::let_out() {
    if (own_ && own_->bell_) {
        std::exchange(own_->bell_, nullptr)->write_ring();
    }
}

void HeldRing::write(std::shared_ptr<Doorbell> bell) {
    if (own_ && !own_->bell_) {
        own_->bell_ = std::move(bell);
    } else {
        bell->write_ring();
    }
}

void Doorbell::wake(bool readable) {
    const bool rung = state_.exchange(State::awake, std::memory_order_acq_rel) == State::rung;
    unread_ = unread_ || readable || rung;
}

bool Doorbell::rest() {
    // Emptied only now: that spares the way from a ring to what it is for a system call.
    if (std::exchange(unread_, false)) {
        eventfd_t count = 0;
        static_cast<void>(::eventfd_read(event_.get(), &count));
    }
    return state_.exchange(State::asleep, std::memory_order_acq_rel) == State::rung;
}

void Doorbell::sleep_and_serve(const Deadline& deadline, const Sources& sources,
                               bool with_watches) {
    std::array<pollfd, 10> entries; // as many sources as there can be, the bell and the watches
    entries[0] = {.fd = event_.get(), .events = POLLIN, .revents = 0};
    std::array<Deadline, 10> moments;
    nfds_t count = 1;
    Deadline until = deadline;
    for (const auto& source : sources.all()) {
        const Source::Watch watch = source->watch();
        entries[count] = {.fd = watch.descriptor, .events = watch.events, .revents = 0};
        moments[count++] = watch.deadline;
        until = Deadline::earlier(until, watch.deadline);
    }
    if (with_watches && watches_) {
        moments[count] = Deadline::after(INFINITE);
        entries[count++] = {.fd = watches_->descriptor(), .events = POLLIN, .revents = 0};
    }
    timespec left{};
    if (!until.endless()) {
        left = to_timespec(until.remaining());
    }
    const int ready = ::ppoll(entries.data(), count, until.endless() ? nullptr : &left, nullptr);
    // Awake before it serves: what it completes is its own wait, and needs no ring.
    wake(ready > 0 && entries[0].revents != 0);
    const auto is_due = [&](nfds_t i) {
        return (ready > 0 && entries[i].revents != 0) || moments[i].passed();
    };
    for (nfds_t i = 1; i <= sources.all().size(); ++i) {
        if (is_due(i)) {
            sources.all()[i - 1]->serve();
        }
    }
    if (count > sources.all().size() + 1 && is_due(count - 1)) {
        serve_watches();
    }
}

void Doorbell::wait_in_host(const Deadline& deadline) {
    const HostWait host = host_wait;
    const bool nested = std::exchange(in_host_wait, true);
    host.wait(host.context, descriptor(), whole_milliseconds(deadline));
    in_host_wait = nested;
}

void Sleeper::sleep(const Deadline& deadline, const Sources& sources) {
    HeldRing::let_out();
    slept_ = true;
    const bool with_watches = kind_ == Kind::serving_messages;
    if (bell_.rest()) {
        bell_.wake(false);
    } else if (with_watches && bell_.host_wait.wait) {
        constexpr DWORD slice = 20;
        const bool blind = !sources.all().empty();
        bell_.wait_in_host(blind ? Deadline::earlier(deadline, Deadline::after(slice)) : deadline);
        bell_.wake(true);
        for (const auto& source : sources.all()) {
            source->serve();
        }
        bell_.serve_watches();
    } else {
        bell_.sleep_and_serve(deadline, sources, with_watches);
    }
}

} // namespace tarnel
