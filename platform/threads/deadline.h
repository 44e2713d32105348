#pragma once

#include "platform/base/types.h"

#include <algorithm>
#include <chrono>

constexpr DWORD INFINITE = 0xFFFFFFFF;

namespace tarnel {

/// The moment at which a wait gives up, computed once on the monotonic clock.
class Deadline {
  public:
    using Clock = std::chrono::steady_clock;

    /// Never comes.
    Deadline() = default;

    /// `milliseconds` from now; INFINITE never comes, and 0 has passed already.
    static Deadline after(DWORD milliseconds) {
        return milliseconds == INFINITE
                   ? Deadline()
                   : Deadline(Clock::now() + std::chrono::milliseconds(milliseconds));
    }

    static Deadline earlier(const Deadline& a, const Deadline& b) {
        return Deadline(std::min(a.moment_, b.moment_));
    }

    bool endless() const { return moment_ == Clock::time_point::max(); }

    bool passed() const { return !endless() && Clock::now() >= moment_; }

    /// What is left, never negative. Not for an endless deadline.
    std::chrono::nanoseconds remaining() const {
        return std::max(moment_ - Clock::now(), Clock::duration::zero());
    }

  private:
    explicit Deadline(Clock::time_point moment) : moment_(moment) {}

    Clock::time_point moment_ = Clock::time_point::max();
};

} // namespace tarnel
