#pragma once

#include "platform/threads/critical_section.h"
#include "platform/threads/event.h"
#include "platform/threads/thread.h"

#include <atomic>

namespace tarnel {

/// The section that a worker holds while it works. A plain one, released and taken again at once,
/// may go to its holder over and over; here it goes to who has asked for it meanwhile.
class SuspendLock : public CCriticalSection {
  public:
    BOOL Lock() { return Take(nullptr); }

    /// Takes it from a holder that releases it when `request` is signalled.
    BOOL LockWith(CEvent& request) { return Take(&request); }

    BOOL Unlock() {
        if (--depth_ == 0) {
            holder_ = 0;
        }
        return CCriticalSection::Unlock();
    }

  private:
    BOOL Take(CEvent* request) {
        const DWORD self = GetCurrentThreadId();
        const bool again = holder_ == self; // those who wait for their turn wait for this thread
        if (!again) {
            turn_.Lock();
        }
        if (request) {
            request->SetEvent();
        }
        CCriticalSection::Lock();
        holder_ = self;
        ++depth_;
        return again || turn_.Unlock();
    }

    CCriticalSection turn_; ///< to take it next
    std::atomic<DWORD> holder_ = 0;
    int depth_ = 0; ///< the holder's
};

} // namespace tarnel
