#include "platform/threads/doorbell.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
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

bool Doorbell::silence() {
    if (!rung_.load(std::memory_order_acquire)) {
        return false;
    }
    // Emptied before the mark goes: a ring between the two is seen by the look that follows.
    eventfd_t count = 0;
    static_cast<void>(::eventfd_read(event_.get(), &count));
    rung_.exchange(false, std::memory_order_acq_rel);
    return true;
}

void Doorbell::sleep(const Deadline& deadline) {
    pollfd entry{.fd = event_.get(), .events = POLLIN, .revents = 0};
    timespec left{};
    if (!deadline.endless()) {
        left = to_timespec(deadline.remaining());
    }
    static_cast<void>(::ppoll(&entry, 1, deadline.endless() ? nullptr : &left, nullptr));
}

void Sleeper::sleep(const Deadline& deadline) {
    if (kind_ == Kind::serving_messages && bell_.host_wait.wait) {
        const HostWait host = bell_.host_wait;
        const bool nested = std::exchange(bell_.in_host_wait, true);
        host.wait(host.context, bell_.descriptor(), whole_milliseconds(deadline));
        bell_.in_host_wait = nested;
    } else {
        bell_.sleep(deadline);
    }
    took_ring_ = bell_.silence() || took_ring_;
}

} // namespace tarnel
