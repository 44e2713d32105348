#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"
#include "platform/threads/wait.h"

constexpr DWORD QS_POSTMESSAGE = 0x0008;
constexpr DWORD QS_SENDMESSAGE = 0x0040;
constexpr DWORD QS_ALLINPUT = 0x04FF;

/// Waits for one of `count` (0 to 63) objects or for new input of the kinds in `mask` in the
/// calling thread's queue: WAIT_OBJECT_0 plus the object's index, plus `count` for input,
/// WAIT_TIMEOUT, or WAIT_FAILED with the last error. Input is new until the thread looks at its
/// queue; what was there then is old and does not end the wait, so drain the queue fully after
/// this return. Nothing is dispatched meanwhile. `all` must be FALSE: waiting for all objects and
/// input together is refused with ERROR_INVALID_PARAMETER.
TARNEL_PLATFORM_API DWORD MsgWaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL all,
                                                    DWORD milliseconds, DWORD mask);
