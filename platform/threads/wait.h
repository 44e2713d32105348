#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"
#include "platform/threads/deadline.h"

constexpr DWORD WAIT_OBJECT_0 = 0;
constexpr DWORD WAIT_TIMEOUT = 258;
constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;
constexpr DWORD MAXIMUM_WAIT_OBJECTS = 64;

/// Waits up to `milliseconds` (INFINITE: without limit) for the object: WAIT_OBJECT_0,
/// WAIT_TIMEOUT, or WAIT_FAILED with the last error. No message is dispatched meanwhile, sent ones
/// neither, so a thread that sends to a window of the waiting thread stands still with it.
TARNEL_PLATFORM_API DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds);

/// Waits for one of `count` (1 to 64) objects, or with `all` for all of them at one moment, which
/// then must be different ones. WAIT_OBJECT_0 plus the lowest index that is signalled (plus 0 with
/// `all`), else as above.
TARNEL_PLATFORM_API DWORD WaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL all,
                                                 DWORD milliseconds);

/// Closes the handle; waits that run go on. Closing the handle of a thread that has ended waits
/// until nothing of it runs any more. FALSE and ERROR_INVALID_HANDLE for what is no open handle.
TARNEL_PLATFORM_API BOOL CloseHandle(HANDLE handle);

namespace tarnel {

/// How many handles the process has open: what a test for leaks compares.
TARNEL_PLATFORM_API std::size_t open_handle_count();

} // namespace tarnel
