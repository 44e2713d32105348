#pragma once

#include "platform/base/descriptor.h"
#include "platform/base/export.h"
#include "platform/threads/deadline.h"
#include "platform/threads/host_wait.h"
#include "platform/threads/source.h"
#include "platform/threads/watch_set.h"

#include <atomic>
#include <memory>

namespace tarnel {

/// The one descriptor that a thread sleeps on. Whoever changes something that the thread may wait
/// for changes it first, under a lock that the thread takes to look at it, and rings then; the
/// thread looks again at everything when it wakes, so a ring too many does no harm. Ringing may
/// happen on any thread for as long as the bell is held; the rest belongs to the bell's own thread.
class Doorbell {
  public:
    /// Null when the process has no descriptor left.
    static std::shared_ptr<Doorbell> make();

    /// Writes to the descriptor only when the thread sleeps: one that is awake finds the mark
    /// before it goes to sleep.
    void ring() {
        if (mark_rung()) {
            write_ring();
        }
    }

    /// The first half of ring(), for use under a lock: whether the caller is to call write_ring()
    /// after the lock is gone.
    bool mark_rung() {
        return state_.load(std::memory_order_acquire) != State::rung &&
               state_.exchange(State::rung, std::memory_order_acq_rel) == State::asleep;
    }

    void write_ring();

    /// Readable while the bell has been rung and its thread is not awake to see it, or there is
    /// something for its watches.
    int descriptor() const { return watches_ ? watches_->descriptor() : event_.get(); }

    /// What the thread's message loops look after besides messages; made at the first need. Null,
    /// with the last error, when no descriptor is left.
    const std::shared_ptr<WatchSet>& watches() {
        if (!watches_) {
            watches_ = WatchSet::make(event_.get());
        }
        return watches_;
    }

    /// False when there are none.
    bool serve_watches() {
        if (watches_) {
            watches_->serve();
        }
        return watches_ != nullptr;
    }

    // The application's own loop may listen to the bell as well (see Sleeper): while that loop
    // runs, the thread counts as asleep.

    bool is_hosted() const { return hosted_; }

    /// The descriptor does not change any more.
    void host() {
        hosted_ = true;
        watches();
        rest();
    }

    /// From the host's loop into the layer; what was rung for must be looked for afterwards.
    void wake(bool readable);

    /// Back to sleep, or into the host's loop: whether a ring came while the thread was awake.
    /// What that was for must be looked for, or be rung for again.
    bool rest();

    HostWait host_wait;
    bool in_host_wait = false;

  private:
    friend class Sleeper;

    enum class State { awake, asleep, rung };

    explicit Doorbell(Descriptor event) : event_(std::move(event)) {}

    void sleep_and_serve(const Deadline& deadline, const Sources& sources, bool with_watches);
    void wait_in_host(const Deadline& deadline);

    Descriptor event_;
    std::shared_ptr<WatchSet> watches_; ///< the thread's own
    std::atomic<State> state_ = State::awake;
    bool unread_ = false; ///< the descriptor was written to, and not emptied since
    bool hosted_ = false;
};

/// While it lives, its thread's ring waits to be written, so that who is woken does not run into a
/// lock that the thread is about to free. It is for one bell at a time; a sleep of the thread lets
/// it out.
class TARNEL_PLATFORM_API HeldRing {
  public:
    HeldRing();
    HeldRing(const HeldRing&) = delete;
    HeldRing& operator=(const HeldRing&) = delete;
    ~HeldRing();

    /// Writes a ring that was marked, now or when the calling thread holds none back any more.
    static void write(std::shared_ptr<Doorbell> bell);

    /// Lets the calling thread's ring out.
    static void let_out();

  private:
    static thread_local constinit HeldRing* own_ TARNEL_FAST_THREAD_LOCAL;

    std::shared_ptr<Doorbell> bell_;
};

/// One wait of the bell's own thread. When the application's loop listens to the same bell, a ring
/// that was taken here may have been meant for that loop: it is rung once more at the end.
class Sleeper {
  public:
    enum class Kind { plain, serving_messages };

    /// A wait that serves messages sleeps in the host's own wait, where there is one.
    Sleeper(Doorbell& bell, Kind kind) : bell_(bell), kind_(kind) {}

    Sleeper(const Sleeper&) = delete;
    Sleeper& operator=(const Sleeper&) = delete;

    ~Sleeper() {
        if (slept_ && bell_.is_hosted()) {
            bell_.rest();
            bell_.ring();
        }
    }

    /// Returns after a ring, at the deadline, or early for no reason. Serves `sources` meanwhile,
    /// unless the host's own wait knows nothing of them: then it sleeps in short slices.
    void sleep(const Deadline& deadline, const Sources& sources = {});

  private:
    Doorbell& bell_;
    const Kind kind_;
    bool slept_ = false;
};

} // namespace tarnel
