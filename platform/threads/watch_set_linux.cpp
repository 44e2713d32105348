#include "platform/base/last_error.h"
#include "platform/base/system_error.h"
#include "platform/threads/thread_state.h"
#include "platform/threads/watch_set.h"

#include <sys/epoll.h>

#include <algorithm>
#include <array>

namespace tarnel {
namespace {

constexpr std::uint64_t bell_mark = ~std::uint64_t{0};

std::uint64_t mark_of(std::size_t place, std::uint32_t generation) {
    return std::uint64_t{generation} << 32 | place;
}

} // namespace

bool Watch::start(int descriptor, std::uint32_t events) {
    stop();
    const auto& bell = ThreadState::current().doorbell();
    const auto set = bell ? bell->watches() : nullptr;
    if (!set || !set->add(*this, descriptor, events)) {
        return false;
    }
    set_ = set;
    descriptor_ = descriptor;
    return true;
}

void Watch::stop() {
    const auto set = set_.lock();
    if (set && started()) {
        set->remove(*this);
    }
    descriptor_ = -1;
}

std::shared_ptr<WatchSet> WatchSet::make(int bell) {
    Descriptor epoll(::epoll_create1(EPOLL_CLOEXEC));
    epoll_event event{.events = EPOLLIN, .data = {.u64 = bell_mark}};
    if (!epoll || ::epoll_ctl(epoll.get(), EPOLL_CTL_ADD, bell, &event) != 0) {
        SetLastError(error_from_errno(errno));
        return nullptr;
    }
    return std::shared_ptr<WatchSet>(new WatchSet(std::move(epoll)));
}

std::size_t WatchSet::free_place() {
    const auto free = std::ranges::find(places_, nullptr, &Place::watch);
    const auto place = static_cast<std::size_t>(free - places_.begin());
    if (free == places_.end()) {
        places_.emplace_back();
    }
    return place;
}

bool WatchSet::add(Watch& watch, int descriptor, std::uint32_t events) {
    const std::size_t place = free_place();
    epoll_event event{.events = events | EPOLLET,
                      .data = {.u64 = mark_of(place, places_[place].generation)}};
    if (::epoll_ctl(epoll_.get(), EPOLL_CTL_ADD, descriptor, &event) != 0) {
        SetLastError(error_from_errno(errno));
        return false;
    }
    places_[place].watch = &watch;
    watch.place_ = place;
    return true;
}

void WatchSet::remove(Watch& watch) {
    ::epoll_ctl(epoll_.get(), EPOLL_CTL_DEL, watch.descriptor_, nullptr);
    Place& place = places_[watch.place_];
    place.watch = nullptr;
    ++place.generation;
}

void WatchSet::serve() {
    std::array<epoll_event, 16> events;
    int count = 0;
    do {
        count = ::epoll_wait(epoll_.get(), events.data(), static_cast<int>(events.size()), 0);
        for (int i = 0; i < count; ++i) {
            const epoll_event& event = events[static_cast<std::size_t>(i)];
            const auto place = static_cast<std::size_t>(event.data.u64 & 0xFFFFFFFF);
            const bool is_current = event.data.u64 != bell_mark && places_[place].watch &&
                                    mark_of(place, places_[place].generation) == event.data.u64;
            if (is_current) {
                places_[place].watch->serve(event.events);
            }
        }
    } while (count == static_cast<int>(events.size()));
}

} // namespace tarnel
