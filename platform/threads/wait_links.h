#pragma once

#include "platform/threads/wait.h"
#include "platform/threads/waitable.h"

namespace tarnel {

/// The objects behind the handles of one wait.
class WaitLinks {
  public:
    /// False, with the last error, for too many handles and for one that is not open.
    bool find(DWORD count, const HANDLE* handles);

    std::span<WaitLink> links() { return std::span(links_).first(count_); }

    /// Whether an object stands twice among them.
    bool repeated() const;

  private:
    std::array<WaitLink, MAXIMUM_WAIT_OBJECTS> links_;
    std::size_t count_ = 0;
};

/// Runs `wait` on the calling thread until it is completed or the deadline has passed, without
/// dispatching anything; the result as of WaitForSingleObject.
DWORD run_plain_wait(Wait& wait, const Deadline& deadline);

} // namespace tarnel
