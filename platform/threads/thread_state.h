#pragma once

#include "platform/base/types.h"
#include "platform/threads/doorbell.h"

#include <memory>

namespace tarnel {

class Thread;

/// What the layer keeps for each thread that calls it, whoever started the thread: made at the
/// first need, and taken down after the thread's own thread-local objects. The main thread keeps
/// its state to the end of the process. Belongs to its thread alone.
class ThreadState {
  public:
    static ThreadState& current();

    /// The thread's bell, shared with those who ring it; null when no descriptor is left.
    const std::shared_ptr<Doorbell>& doorbell();

    DWORD id() const { return id_; }

    /// Called once with `context` when the thread ends, before its end is signalled. One hook is
    /// all that the rooms above need.
    void at_end(void (*hook)(void* context), void* context) {
        end_hook_ = hook;
        end_context_ = context;
    }

    /// The object to be signalled as the last step of the thread.
    void signal_at_end(std::shared_ptr<Thread> thread) { thread_ = std::move(thread); }

  private:
    ThreadState();
    ~ThreadState();

    static void end(void* state);
    static ThreadState* make();

    const DWORD id_;
    std::shared_ptr<Doorbell> doorbell_;
    std::shared_ptr<Thread> thread_;
    void (*end_hook_)(void*) = nullptr;
    void* end_context_ = nullptr;
};

} // namespace tarnel
