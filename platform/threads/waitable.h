#pragma once

#include "platform/threads/doorbell.h"
#include "platform/threads/source.h"

#include <array>
#include <memory>
#include <mutex>
#include <optional>
#include <span>

namespace tarnel {

class Wait;

/// Guards the state of every waitable object and of every wait: a wait for several objects at once
/// must see them all at one moment. Held for a few instructions, never over a call to anybody.
std::mutex& wait_lock();

/// Bells to be rung once the wait lock is gone: declare it before the lock's guard.
class Bells {
  public:
    Bells() = default;
    Bells(const Bells&) = delete;
    Bells& operator=(const Bells&) = delete;
    ~Bells();

    void add(const std::shared_ptr<Doorbell>& bell);

  private:
    std::array<std::shared_ptr<Doorbell>, 8> bells_;
    std::size_t count_ = 0;
};

/// One object of a wait, and the wait's place in the object's list of waiters.
struct WaitLink {
    std::shared_ptr<class Waitable> object;
    Wait* wait = nullptr;
    WaitLink* previous = nullptr;
    WaitLink* next = nullptr;
};

/// Something that can be waited for through a handle. All virtual functions but the destructor and
/// handle_closed() are called under the wait lock.
class Waitable {
  public:
    Waitable() = default;
    Waitable(const Waitable&) = delete;
    Waitable& operator=(const Waitable&) = delete;
    virtual ~Waitable() = default;

    /// The object's handle is gone; waits that run keep the object.
    virtual void handle_closed() {}

  protected:
    virtual bool is_signalled() const = 0;

    /// What a satisfied wait does to the object.
    virtual void consume() {}

    /// What has to be served while somebody waits for the object, or null.
    virtual std::shared_ptr<Source> source() const { return nullptr; }

    /// Has those who wait look again at what they have to serve.
    void wake_waiters(Bells& bells);

    /// After the object became signalled, under the wait lock: completes the waits that this
    /// satisfies, the oldest first, for as long as the object stays signalled.
    void complete_waits(Bells& bells);

  private:
    friend class Wait;

    WaitLink* first_ = nullptr;
    WaitLink* last_ = nullptr;
};

/// One wait of the calling thread on several objects; it lives on the waiting thread's stack.
class Wait {
  public:
    /// `links` name the objects and live as long as the wait. With `all`, the wait is satisfied
    /// when all objects are signalled at one moment.
    Wait(std::span<WaitLink> links, bool all);

    Wait(const Wait&) = delete;
    Wait& operator=(const Wait&) = delete;

    /// Leaves the lists; a wait that was completed meanwhile has consumed its object all the same.
    ~Wait();

    /// Satisfies the wait at once if it can be. The result is the index of the first object that
    /// is signalled (0 with `all`).
    std::optional<std::size_t> try_now();

    /// Tries once more, then enters the objects' lists: from now on a signal completes the wait
    /// and rings `bell`.
    std::optional<std::size_t> enlist(const std::shared_ptr<Doorbell>& bell);

    /// The result, once the wait has been completed.
    std::optional<std::size_t> result() const;

    /// What the waiting thread has to serve meanwhile.
    void gather(Sources& sources) const;

    /// Leaves the lists for good and says whether the wait was completed before.
    std::optional<std::size_t> withdraw();

  private:
    friend class Waitable;

    std::optional<std::size_t> satisfy();
    void leave_lists();

    const std::span<WaitLink> links_;
    const bool all_;
    bool enlisted_ = false;
    std::shared_ptr<Doorbell> bell_;
    std::optional<std::size_t> result_;
};

} // namespace tarnel
