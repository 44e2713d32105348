#include "platform/base/last_error.h"
#include "platform/base/system_error.h"
#include "platform/registry/folder_lock.h"
#include "platform/threads/deadline.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <thread>

namespace tarnel {

FolderLock::FolderLock(const std::filesystem::path& folder)
    : folder_(retry_on_signal(
          [&] { return ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); })),
      error_(folder_ ? acquire() : error_from_errno(errno)) {}

// Closing alone would leave it with a child that was forked meanwhile.
FolderLock::~FolderLock() {
    ::flock(folder_.get(), LOCK_UN);
}

// Whoever may read the folder can hold the lock: it is never waited for without end.
DWORD FolderLock::acquire() const {
    const Deadline deadline = Deadline::after(5'000);
    while (::flock(folder_.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) {
            return error_from_errno(errno);
        }
        if (deadline.passed()) {
            return ERROR_BUSY;
        }
        // Briefly, for a busy writer leaves the lock free for moments only.
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return ERROR_SUCCESS;
}

} // namespace tarnel
