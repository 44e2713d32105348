#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

/// Milliseconds since the machine was started, in steps of a few milliseconds; wraps around after
/// 49.7 days, so take differences in DWORD arithmetic.
TARNEL_PLATFORM_API DWORD GetTickCount();

/// Sleeps that long, dispatching nothing; 0 gives way to another thread that is ready to run.
TARNEL_PLATFORM_API void Sleep(DWORD milliseconds);
