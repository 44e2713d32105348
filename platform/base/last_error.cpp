#include "platform/base/last_error.h"

namespace {

// Without a destructor, so that a thread's last calls may still set it.
thread_local constinit DWORD last_error = ERROR_SUCCESS;

} // namespace

DWORD GetLastError() {
    return last_error;
}

void SetLastError(DWORD error) {
    last_error = error;
}
