#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

/// WM_QUIT has come; it is posted again for the loop outside.
constexpr DWORD WAIT_QUIT = 0x200;

/// Waits up to `milliseconds` (INFINITE: without limit) for one of `count` (0 to 63) objects, or
/// with `count` 0 for the time alone, and dispatches the thread's messages meanwhile, those that
/// are queued already too. The time is one for the whole call: what is queued when it is over stays
/// queued. WAIT_OBJECT_0 plus the object's index, WAIT_TIMEOUT, WAIT_QUIT, or WAIT_FAILED with the
/// last error. With `dispatch` 0 it is a plain wait. `reserved` must be null.
TARNEL_PLATFORM_API DWORD SafeWaitWithMessageLoop(DWORD count, const HANDLE* handles,
                                                  DWORD milliseconds, BOOL dispatch,
                                                  void* reserved);
