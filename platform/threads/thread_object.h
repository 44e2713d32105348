#pragma once

#include "platform/threads/waitable.h"

#include <pthread.h>

#include <atomic>

namespace tarnel {

using ThreadProcedure = DWORD (*)(void*);

/// A thread that the layer has started. Signalled as the very last step of the thread; closing its
/// handle joins it then, so that afterwards no instruction of it is left to run.
class Thread final : public Waitable {
  public:
    /// The thread begins with `procedure` once it has been resumed as often as it is suspended.
    Thread(ThreadProcedure procedure, void* argument, DWORD suspended)
        : procedure_(procedure), argument_(argument), suspended_(suspended) {}

    /// False when the system starts no more threads.
    static bool start(const std::shared_ptr<Thread>& thread, std::size_t stack_size);

    /// The suspend count before the call.
    DWORD resume();

    /// STILL_ACTIVE until the thread has ended.
    DWORD exit_code() const;

    /// For the ending thread itself.
    void signal_end();

    void handle_closed() override;

  private:
    static void* run(void* self);

    bool is_signalled() const override { return ended_; }

    const ThreadProcedure procedure_;
    void* const argument_;
    std::atomic<DWORD> suspended_;
    pthread_t pthread_{};
    DWORD result_ = 0; // the thread's own until it has ended
    bool ended_ = false;
};

} // namespace tarnel
