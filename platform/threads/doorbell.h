#pragma once

#include "platform/base/descriptor.h"
#include "platform/threads/deadline.h"
#include "platform/threads/host_wait.h"

#include <atomic>
#include <memory>

namespace tarnel {

/// The one descriptor that a thread sleeps on. Whoever changes something that the thread may wait
/// for changes it first, under its own lock, and rings then; the thread looks again at everything
/// when it wakes, so a ring too many does no harm. Ringing may happen on any thread for as long as
/// the bell is held; the rest belongs to the bell's own thread.
class Doorbell {
  public:
    /// Null when the process has no descriptor left.
    static std::shared_ptr<Doorbell> make();

    /// Writes to the descriptor only when it has not been rung since the thread last looked.
    void ring() {
        if (mark_rung()) {
            write_ring();
        }
    }

    /// The first half of ring(), for use under a lock: whether the caller is to call write_ring()
    /// after the lock is gone.
    bool mark_rung() {
        return !rung_.load(std::memory_order_acquire) &&
               !rung_.exchange(true, std::memory_order_acq_rel);
    }

    void write_ring();

    /// Readable while the bell has been rung; the application's loop may poll it.
    int descriptor() const { return event_.get(); }

    /// Takes the ring back, if there is one: what it announced must be looked for afterwards.
    bool silence();

    /// With a host the bell is shared with the application's own loop: see Sleeper.
    bool hosted = false;
    bool in_host_wait = false;
    HostWait host_wait;

  private:
    friend class Sleeper;

    explicit Doorbell(Descriptor event) : event_(std::move(event)) {}

    void sleep(const Deadline& deadline);

    Descriptor event_;
    std::atomic<bool> rung_ = false;
};

/// One wait of the bell's own thread. When the application's loop listens to the same bell, rings
/// that were taken here may have been meant for that loop: it is rung once more at the end.
class Sleeper {
  public:
    enum class Kind { plain, serving_messages };

    /// A wait that serves messages sleeps in the host's own wait, where there is one.
    Sleeper(Doorbell& bell, Kind kind) : bell_(bell), kind_(kind) {}

    Sleeper(const Sleeper&) = delete;
    Sleeper& operator=(const Sleeper&) = delete;

    ~Sleeper() {
        if (bell_.hosted && took_ring_) {
            bell_.ring();
        }
    }

    /// Returns after a ring, at the deadline, or early for no reason.
    void sleep(const Deadline& deadline);

  private:
    Doorbell& bell_;
    const Kind kind_;
    bool took_ring_ = false;
};

} // namespace tarnel
